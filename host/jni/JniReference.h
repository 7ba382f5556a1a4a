#pragma once

#include <jni.h>

namespace quill::host {

/** Owns a local reference, so that a loop in native code does not use up the frame's. */
template <typename T>
class LocalReference {
  public:
    LocalReference(JNIEnv* env, T reference) : mEnv(env), mReference(reference) {}
    ~LocalReference() {
        if (mReference != nullptr) mEnv->DeleteLocalRef(mReference);
    }
    LocalReference(const LocalReference&) = delete;
    LocalReference& operator=(const LocalReference&) = delete;

    T get() const { return mReference; }
    explicit operator bool() const { return mReference != nullptr; }

  private:
    JNIEnv* const mEnv;
    const T mReference;
};

}  // namespace quill::host
