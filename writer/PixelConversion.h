#pragma once

#include <stddef.h>
#include <stdint.h>

#include "VectorWidth.h"

namespace android {

/**
 * The area that a frame's planes are allotted: columns of one row (its stride) and rows of the luma plane (its slice
 * height), both in samples. Conversions work on the whole of it, the padding around the picture included.
 */
struct AllottedArea {
    int32_t stride;
    int32_t sliceHeight;

    /** Samples of the luma plane, in the 32-bit arithmetic that frame sizes are computed in. */
    int32_t lumaSamples() const { return stride * sliceHeight; }
    /** Bytes of an 8-bit 4:2:0 frame as a camera lays it out. */
    int32_t yuvBytes() const { return lumaSamples() * 3 / 2; }
    /**
     * Bytes of a buffer that holds any conversion to NV12 and any read of it: with an odd stride or slice height there
     * is half a chroma pair or row more than a camera's frame has.
     */
    size_t nv12Bytes() const {
        const size_t width = static_cast<size_t>(stride);
        const size_t rows = static_cast<size_t>(sliceHeight);
        return width * rows + (width + 1) * ((rows + 1) / 2) + 1;
    }
};

// Each writes an 8-bit NV12 frame of the same area: luma at pitch `stride`, then U,V pairs. Buffers are not checked:
// `nv12` holds area.nv12Bytes(), the source what its layout takes. Every vector width gives the same bytes.

/** Y, U and V planes of full, quarter and quarter size. */
void convertI420(const uint8_t* i420, const AllottedArea& area, uint8_t* nv12, VectorWidth most = kWidestVectors);
/** 16-bit little-endian samples, of which the high byte is kept: no rounding, and no look at the justification. */
void convertP010(const uint8_t* p010, const AllottedArea& area, uint8_t* nv12, VectorWidth most = kWidestVectors);
/**
 * R, G, B, A bytes to full-range BT.601, computed in double precision and truncated toward zero. Chroma comes from the
 * top left pixel of each 2x2 block alone.
 */
void convertRgba8888(const uint8_t* rgba, const AllottedArea& area, uint8_t* nv12, VectorWidth most = kWidestVectors);

/** Luma and chroma of one colour as `convertRgba8888` defines them. */
uint8_t rgbToLuma(uint8_t r, uint8_t g, uint8_t b);
uint8_t rgbToU(uint8_t r, uint8_t g, uint8_t b);
uint8_t rgbToV(uint8_t r, uint8_t g, uint8_t b);

/** Separates `samples` luma bytes and their interleaved chroma into three planes. */
void splitNv12(const uint8_t* nv12, int32_t samples, uint8_t* y, uint8_t* u, uint8_t* v);

}  // namespace android
