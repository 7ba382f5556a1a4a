#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include <jni.h>

#include "FrameBytes.h"
#include "PinnedBytes.h"

namespace android {

/** Where a frame's pixels lie in the Java heap, held from construction to destruction on one thread. */
class FrameSource {
  public:
    virtual ~FrameSource() = default;
    /** The frame's pixels; null when they could not be had or are fewer than `expected`. */
    virtual uint8_t* pixels(const FrameBytes& expected) = 0;
    /** The call returns while the looper still reads the frame: hold it beyond, and give nothing back any more. */
    virtual void outliveCall() = 0;
};

/**
 * A byte array. One that lacks only the tail of its last chroma row is completed in a copy, and what the writer changed
 * in that goes back into the array.
 */
class PinnedFrame : public FrameSource {
  public:
    PinnedFrame(JNIEnv* env, jbyteArray array) : mArray(env, array) {}
    ~PinnedFrame() override;
    PinnedFrame(const PinnedFrame&) = delete;
    PinnedFrame& operator=(const PinnedFrame&) = delete;

    uint8_t* pixels(const FrameBytes& expected) override;
    void outliveCall() override;

  private:
    void complete(size_t wholeBytes);
    size_t arrayBytes() const { return static_cast<size_t>(mArray.length()); }

    PinnedBytes mArray;
    std::vector<uint8_t> mCompleted;
    bool mLate = false;
};

/** A bitmap's pixels, locked. Their size is not looked at: the writer's geometry has to be the bitmap's. */
class LockedBitmap : public FrameSource {
  public:
    LockedBitmap(JNIEnv* env, jobject bitmap);
    ~LockedBitmap() override;
    LockedBitmap(const LockedBitmap&) = delete;
    LockedBitmap& operator=(const LockedBitmap&) = delete;

    uint8_t* pixels(const FrameBytes& expected) override;
    void outliveCall() override;

  private:
    JavaVM* mVm = nullptr;
    jobject mBitmap;
    void* mPixels = nullptr;
    bool mLate = false;
};

}  // namespace android
