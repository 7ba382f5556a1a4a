#pragma once

#include <stdint.h>

namespace android {

/**
 * Layout of a frame as the camera hands it over, passed from Java as its code. With S = stride in samples and
 * V = slice height in rows; chroma is subsampled 4:2:0 throughout.
 */
enum InputColorFormat : int32_t {
    FORMAT_I420 = 0,      ///< Y plane of S x V bytes, then U and V planes of S x V / 4 bytes each, pitch S / 2
    FORMAT_P010 = 1,      ///< 16-bit little-endian samples: Y plane of S x V, then interleaved U,V of S x V / 2
    FORMAT_RGBA8888 = 2,  ///< 4 bytes a pixel in the order R, G, B, A, pitch 4 x S bytes
    FORMAT_NV12 = 3,      ///< Y plane of S x V bytes, then interleaved U,V bytes, pitch S
    FORMAT_NV21 = 4,      ///< as NV12 with V before U; the writer swaps the pairs before the encoder sees them
};

/** Bits of one pixel in the layout `fmt`: 32 for RGBA, 24 for P010, 12 for every other code, known or not. */
int getBitsPerPixel(int fmt);

}  // namespace android
