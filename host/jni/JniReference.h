#pragma once

#include <jni.h>

namespace quill::host {

/** Owns a local reference and deletes it early, so that loops in native code do not run out of them. */
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
