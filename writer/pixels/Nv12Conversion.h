#pragma once

#include <stdint.h>

#include "Frame.h"
#include "WidestVectors.h"

namespace android {

// Conversions work on the whole of a frame's stride and slice height, the padding around the picture included. Each
// writes an 8-bit NV12 frame of the same geometry: luma at pitch `stride`, then U,V pairs. Buffers are not checked;
// with an odd stride or slice height `nv12` needs half a chroma pair a row, or half a row, more than a camera's frame
// has. Every vector width gives the same bytes.

/** Y, U and V planes of full, quarter and quarter size. */
void convertI420(const uint8_t* i420, const FrameGeometry& geometry, uint8_t* nv12, VectorWidth most = kWidestVectors);
/**
 * 16-bit little-endian samples, of which the high byte is kept: no rounding, and no look at the justification. Vectors
 * of 512 bits take a tenth longer than those of 256.
 */
void convertP010(const uint8_t* p010, const FrameGeometry& geometry, uint8_t* nv12,
                 VectorWidth most = VectorWidth::k256);
/**
 * R, G, B, A bytes to full-range BT.601, computed in double precision and truncated toward zero. Chroma comes from the
 * top left pixel of each 2x2 block alone.
 */
void convertRgba8888(const uint8_t* rgba, const FrameGeometry& geometry, uint8_t* nv12,
                     VectorWidth most = kWidestVectors);

/**
 * Turns the V,U pairs of an 8-bit semi-planar frame into U,V (or back) in place: ceil(width / 2) pairs in each of
 * height / 2 rows. A last pair that an odd stride lets reach past the frame is left alone.
 */
void swapChromaPairs(uint8_t* frame, const FrameGeometry& geometry, VectorWidth most = kWidestVectors);

/** Separates `samples` luma bytes and their interleaved chroma into three planes. */
void splitNv12(const uint8_t* nv12, int32_t samples, uint8_t* y, uint8_t* u, uint8_t* v);

}  // namespace android
