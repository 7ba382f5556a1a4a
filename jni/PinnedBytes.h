#pragma once

#include <stdint.h>

#include <jni.h>

namespace android {

/**
 * The elements of a Java byte array, pinned from construction to destruction. On release what the native side changed
 * is copied back into the array. An absent array gives null and a length of 0. Made and destroyed on one thread, unless
 * it outlives its call.
 */
class PinnedBytes {
  public:
    PinnedBytes(JNIEnv* env, jbyteArray array);
    ~PinnedBytes();
    PinnedBytes(const PinnedBytes&) = delete;
    PinnedBytes& operator=(const PinnedBytes&) = delete;

    /** Keeps the array beyond the native call; nothing is copied back then, for the array is its owner's again. */
    void outliveCall();

    uint8_t* data() const { return reinterpret_cast<uint8_t*>(mBytes); }
    jsize length() const { return mLength; }
    /** True when the VM had no memory to pin a present array; it has thrown then. */
    bool failed() const { return mLength > 0 && mBytes == nullptr; }

  private:
    JavaVM* mVm = nullptr;
    jbyteArray mArray;
    jsize mLength = 0;
    jbyte* mBytes = nullptr;
    bool mOutlivesCall = false;
};

}  // namespace android
