#pragma once

#include <stdint.h>

#include "VectorWidth.h"

namespace android {

/** The interleaved chroma plane of an 8-bit semi-planar frame, in samples of the luma plane. */
struct ChromaPlane {
    uint8_t* data;   ///< first byte of the plane
    int32_t width;   ///< of the picture
    int32_t height;  ///< of the picture
    int32_t pitch;   ///< bytes a row
    int64_t bytes;   ///< of the plane
};

/**
 * Turns V,U pairs into U,V (or back) in place: ceil(width / 2) pairs in each of height / 2 rows. A last pair that an
 * odd pitch lets reach past the plane is left alone.
 */
void swapChromaPairs(const ChromaPlane& plane, VectorWidth most = kWidestVectors);

}  // namespace android
