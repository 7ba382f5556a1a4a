#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <jni.h>

#include "support/GuardedMemory.h"

namespace quill::test {

/**
 * As much of a Java VM as the library's Java layer asks for, without one: classes and fields are names, objects are the
 * structs below. One at a time, for one thread. As unkind as a VM may be: elements are pinned in place, and once they
 * are released, or a bitmap is unlocked, no native code can touch them.
 */
class FakeVm {
  public:
    class Array {
      public:
        void assign(const std::vector<uint8_t>& bytes);
        std::vector<uint8_t> bytes();
        size_t size() const { return mMemory == nullptr ? 0 : mMemory->size(); }
        /** What the app does with its array once it is its own again. */
        void fill(uint8_t value);

        int8_t* pin();
        void unpin();
        int pins() const { return mPins; }

      private:
        std::unique_ptr<GuardedMemory> mMemory;
        int mPins = 0;
    };
    using Text = std::string;
    struct Object {
        std::map<std::string, jobject> fields;  ///< by field name
        int fd = -1;                            ///< of a FileDescriptor
    };
    /** An android.graphics.Bitmap of 32-bit pixels. */
    struct Bitmap : Object {
        Bitmap(int width, int height, const std::vector<uint8_t>& rgba);
        Array pixels;
        std::map<std::string, jint> numbers;
    };

    FakeVm();
    FakeVm(const FakeVm&) = delete;
    FakeVm& operator=(const FakeVm&) = delete;

    JNIEnv* env() { return &mEnv; }
    JavaVM* vm() { return &mVm; }
    static jbyteArray asJava(Array* array) { return reinterpret_cast<jbyteArray>(array); }
    static jobject asJava(Object* object) { return reinterpret_cast<jobject>(object); }
    static jobject asJava(Text* text) { return reinterpret_cast<jobject>(text); }

    // What goes wrong, to be set by a test.
    std::set<std::string> missing;  ///< names of classes and fields that are not found
    bool attached = true;           ///< `GetEnv` succeeds
    bool classesKnown = true;       ///< `GetObjectClass` succeeds
    jint registerResult = JNI_OK;
    bool exceptionPending = false;

    // What was asked for.
    std::string registeredClass;
    std::vector<std::string> registered;  ///< names of methods
    std::vector<std::string> thrown;      ///< "class: message"
    int callsAfterAnException = 0;        ///< that JNI forbids then
    int texts = 0;                        ///< whose characters are handed out

  private:
    JNINativeInterface mTable{};
    JNIInvokeInterface mInvokeTable{};
    JNIEnv mEnv{};
    JavaVM mVm{};
};

}  // namespace quill::test
