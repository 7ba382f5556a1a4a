#pragma once

#include <stdint.h>

namespace android {

/** An 8-bit NV12 frame: the picture's size and the area its planes are allotted, in samples. */
struct Nv12Frame {
    const uint8_t* data;
    int32_t width;
    int32_t height;
    int32_t stride;
    int32_t sliceHeight;
};

/** An 8-bit NV12 picture without padding. */
struct ThumbnailSize {
    int32_t width;
    int32_t height;  ///< even

    int32_t lumaSamples() const { return width * height; }
    int32_t yuvBytes() const { return lumaSamples() * 3 / 2; }
};

/**
 * One luma sample of the frame reduced: the mean, rounded down, of 4 x 4 samples three apart, beginning at column `x`
 * and row `y`; near the right and bottom edges, where they would leave the picture, the sample at (x, y) itself.
 */
int sampleLuma(const Nv12Frame& frame, int x, int y);

/**
 * Reduces the frame to `size`; `thumbnail` holds size.yuvBytes(), its chroma zeroed: each pair there is summed up from
 * quarters, one for each of the four luma samples that share it.
 */
void downscaleNv12(const Nv12Frame& frame, const ThumbnailSize& size, uint8_t* thumbnail);

}  // namespace android
