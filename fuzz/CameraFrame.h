#pragma once

#include <memory>

#include "ByteSource.h"
#include "Frame.h"

namespace quill::fuzz {

/**
 * A heap block that is used again and again from wherever makes the bytes in use its last ones: a step past them is one
 * past the block, which the sanitizers see.
 */
class TailBlock {
  public:
    explicit TailBlock(int64_t capacity) : mCapacity(capacity), mData(new uint8_t[static_cast<size_t>(capacity)]()) {}

    uint8_t* last(int64_t bytes) {
        require(bytes <= mCapacity, "a small frame");
        return mData.get() + mCapacity - bytes;
    }

  private:
    const int64_t mCapacity;
    const std::unique_ptr<uint8_t[]> mData;
};

/** A frame of any format and geometry; one that is not sane or is larger than `kLargest` bytes has no bytes. */
struct CameraFrame {
    static constexpr int64_t kLargest = 32768;

    explicit CameraFrame(ByteSource& script)
            : format(*android::findFrameFormat(script.byte() % 5)),
              geometry{script.number(), script.number(), script.number(), script.number()} {
        // Mostly near each other: any four numbers are a frame once in a thousand times.
        if (script.byte() % 16 != 0) geometry.stride = geometry.width + geometry.stride % 64;
        if (script.byte() % 16 != 0) geometry.sliceHeight = geometry.height + geometry.sliceHeight % 64;
        if (!geometry.isSane()) return;
        const android::FrameBytes size = android::frameBytes(format.code, geometry);
        require(0 <= size.least && size.least <= size.whole && size.whole <= INT32_MAX, "sizes of a frame");
        static TailBlock block(kLargest);
        if (size.whole <= kLargest) bytes = block.last(size.whole);
    }

    const android::FrameFormat& format;
    android::FrameGeometry geometry;
    uint8_t* bytes = nullptr;
};

}  // namespace quill::fuzz
