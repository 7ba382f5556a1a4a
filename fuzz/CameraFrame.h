#pragma once

#include <vector>

#include "ByteSource.h"
#include "Frame.h"

namespace quill::fuzz {

/** The last bytes of a heap block that is used again and again: a step past them is one that the sanitizers see. */
inline uint8_t* lastOf(std::vector<uint8_t>& block, int64_t bytes) {
    require(bytes <= static_cast<int64_t>(block.size()), "a small frame");
    return block.data() + block.size() - bytes;
}

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
        static std::vector<uint8_t> block(kLargest);
        if (size.whole <= kLargest) bytes = lastOf(block, size.whole);
    }

    const android::FrameFormat& format;
    android::FrameGeometry geometry;
    uint8_t* bytes = nullptr;
};

}  // namespace quill::fuzz
