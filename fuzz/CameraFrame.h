#pragma once

#include <string.h>

#include <memory>

#include "ByteSource.h"
#include "FrameBytes.h"

namespace quill::fuzz {

/**
 * A heap block that is used again and again from wherever makes the bytes in use its last ones: a step past them is one
 * past the block, which the sanitizers see. New blocks of such sizes for every input leave most of the time to the
 * kernel.
 */
class TailBlock {
  public:
    explicit TailBlock(size_t capacity) : mCapacity(capacity), mData(new uint8_t[capacity]) {}

    uint8_t* last(size_t bytes) {
        require(bytes <= mCapacity, "a small frame");
        return mData.get() + mCapacity - bytes;
    }
    uint8_t* last(size_t bytes, uint8_t filledWith) {
        return static_cast<uint8_t*>(memset(last(bytes), filledWith, bytes));
    }

  private:
    const size_t mCapacity;
    const std::unique_ptr<uint8_t[]> mData;
};

/** Sizes of a frame in samples, and its layout. */
struct Geometry {
    int32_t width, height, stride, sliceHeight, format;

    /** What a caller of the library owes. */
    size_t bytes() const { return static_cast<size_t>(android::frameBytes(width, stride, sliceHeight, format).whole); }
};

constexpr size_t kLargestFrame = size_t{1} << 22;

/** A frame of noise, to be left as it is. The next one takes its place. */
inline uint8_t* cameraFrame(const Geometry& geometry) {
    static TailBlock* const noise = [] {
        auto* const block = new TailBlock(kLargestFrame);
        uint32_t state = 1;
        for (size_t i = 1; i <= kLargestFrame; ++i) {
            state = state * 1664525 + 1013904223;
            *block->last(i) = static_cast<uint8_t>(state >> 24);
        }
        return block;
    }();
    return noise->last(geometry.bytes());
}

}  // namespace quill::fuzz
