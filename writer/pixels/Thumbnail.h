#pragma once

#include <stdint.h>

#include "Frame.h"

namespace android {

/** An 8-bit NV12 picture without padding. */
struct ThumbnailSize {
    int32_t width;
    int32_t height;  ///< even

    int32_t lumaSamples() const { return width * height; }
    int32_t yuvBytes() const { return lumaSamples() * 3 / 2; }
};

/**
 * One luma sample of an NV12 frame reduced: the mean, rounded down, of 4 x 4 samples three apart, beginning at column
 * `x` and row `y`; near the right and bottom edges, where they would leave the picture, the sample at (x, y) itself.
 */
int sampleLuma(const uint8_t* nv12, const FrameGeometry& geometry, int x, int y);

/**
 * Reduces an NV12 frame to `size`; `thumbnail` holds size.yuvBytes(), its chroma zeroed: each pair there is summed up
 * from quarters, one for each of the four luma samples that share it.
 */
void downscaleNv12(const uint8_t* nv12, const FrameGeometry& geometry, const ThumbnailSize& size, uint8_t* thumbnail);

/**
 * Reduces a frame of any format where it lies, semi-planar chroma in U,V order. With an even stride and slice height
 * the result is that of conversion and `downscaleNv12`. Of odd ones, chroma comes from the whole pairs and rows that
 * the frame has.
 */
void sampleThumbnail(const uint8_t* frame, const FrameFormat& format, const FrameGeometry& geometry,
                     const ThumbnailSize& size, uint8_t* thumbnail);

}  // namespace android
