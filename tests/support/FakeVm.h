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
 * structs below. One at a time, for one thread. Elements are pinned as a copy that nobody may touch once it is
 * released.
 */
class FakeVm {
  public:
    struct Array {
        std::vector<int8_t> bytes;
        int pins = 0;  ///< not released yet
        std::unique_ptr<GuardedMemory> pinned;
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

    // What was asked for.
    std::string registeredClass;
    std::vector<std::string> registered;  ///< names of methods
    std::vector<std::string> thrown;      ///< "class: message"

  private:
    void fillTable();

    JNINativeInterface mTable{};
    JNIInvokeInterface mInvokeTable{};
    JNIEnv mEnv{};
    JavaVM mVm{};
};

}  // namespace quill::test
