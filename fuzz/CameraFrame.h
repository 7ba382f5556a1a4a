#pragma once

#include <algorithm>
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
    explicit TailBlock(size_t capacity) : mCapacity(capacity), mData(new uint8_t[capacity]()) {}

    uint8_t* last(size_t bytes) {
        require(bytes <= mCapacity, "a small frame");
        return mData.get() + mCapacity - bytes;
    }

  private:
    const size_t mCapacity;
    const std::unique_ptr<uint8_t[]> mData;
};

constexpr size_t kLargestFrame = size_t{1} << 20;

/** A frame of any format and geometry; one that is not sane or is too large for this has no bytes. */
struct CameraFrame {
    explicit CameraFrame(ByteSource& script, int32_t largestSide)
            : format(*android::findFrameFormat(script.number<int32_t>(0, 4))) {
        geometry.width = side(script, 1, largestSide);
        geometry.height = side(script, 1, largestSide);
        geometry.stride = side(script, geometry.width, largestSide);
        geometry.sliceHeight = side(script, geometry.height, largestSide);
        if (!geometry.isSane()) return;
        const android::FrameBytes size = android::frameBytes(format.code, geometry);
        require(0 <= size.least && size.least <= size.whole && size.whole <= INT32_MAX, "sizes of a frame");
        static TailBlock block(kLargestFrame);
        if (size.whole <= static_cast<int64_t>(kLargestFrame)) bytes = block.last(static_cast<size_t>(size.whole));
    }

    const android::FrameFormat& format;
    android::FrameGeometry geometry{};
    uint8_t* bytes = nullptr;

  private:
    static int32_t side(ByteSource& script, int32_t low, int32_t largest) {
        constexpr int32_t kExtremes[] = {INT32_MIN, -1, 0, 32767, 46341, 65535, 536870911, 536870912, INT32_MAX};
        if (script.number(0, 15) == 15) return script.oneOf(kExtremes);
        return std::clamp(low, 1, largest) + script.number(0, largest);
    }
};

}  // namespace quill::fuzz
