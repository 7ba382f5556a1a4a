#include "PixelConversion.h"

#include <stddef.h>
#include <string.h>

#include <algorithm>

#include "WidestVectors.h"

namespace android {

namespace {

constexpr int32_t kFewestWithChroma = 4;  // luma samples that share one chroma pair
constexpr int64_t kCopyPiece = 65536;

/** Keeps the high byte of `count` 16-bit little-endian samples. */
QUILL_KERNEL void keepHighBytes(const uint8_t* __restrict source, ptrdiff_t count, uint8_t* __restrict destination) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        uint16_t sample;  // whole: vectors are made of loads that leave no gaps
        memcpy(&sample, source + 2 * i, sizeof sample);
        destination[i] = static_cast<uint8_t>(sample >> 8);
    }
}

/** Copied at once, so many megabytes would go past the caches, and the thumbnail's reading would wait for them. */
void copyInPieces(const uint8_t* source, int64_t bytes, uint8_t* destination) {
    for (int64_t at = 0; at < bytes; at += kCopyPiece) {
        memcpy(destination + at, source + at, static_cast<size_t>(std::min(kCopyPiece, bytes - at)));
    }
}

QUILL_KERNEL void interleave(const uint8_t* u, const uint8_t* v, ptrdiff_t pairs, uint8_t* destination) {
    for (ptrdiff_t i = 0; i < pairs; ++i) {
        destination[2 * i] = u[i];
        destination[2 * i + 1] = v[i];
    }
}

QUILL_KERNEL void keepHighBytesOfPlanes(const uint8_t* p010, const AllottedArea& area, uint8_t* nv12) {
    const ptrdiff_t luma = area.lumaSamples();
    const ptrdiff_t pairsInRow = area.stride / 2;
    keepHighBytes(p010, luma, nv12);
    for (ptrdiff_t row = 0; row < area.sliceHeight / 2; ++row) {
        const ptrdiff_t sample = luma + row * area.stride;
        keepHighBytes(p010 + 2 * sample, 2 * pairsInRow, nv12 + sample);
    }
}

}  // namespace

void convertI420(const uint8_t* i420, const AllottedArea& area, uint8_t* nv12, VectorWidth most) {
    const int64_t luma = int64_t{area.stride} * area.sliceHeight;
    copyInPieces(i420, luma, nv12);
    if (luma < kFewestWithChroma) return;
    const int64_t quarter = luma / 4;
    withWidestVectors<interleave>(most, i420 + luma, i420 + luma + quarter, static_cast<ptrdiff_t>(quarter),
                                  nv12 + luma);
}

void convertP010(const uint8_t* p010, const AllottedArea& area, uint8_t* nv12, VectorWidth most) {
    if (area.sliceHeight >= 1)
        withWidestVectors<keepHighBytesOfPlanes, const uint8_t*, const AllottedArea&>(most, p010, area, nv12);
}

void splitNv12(const uint8_t* nv12, int32_t samples, uint8_t* y, uint8_t* u, uint8_t* v) {
    memcpy(y, nv12, static_cast<size_t>(samples));
    if (samples < kFewestWithChroma) return;
    const uint8_t* pair = nv12 + samples;
    for (int32_t k = 0; k < samples / 4; ++k, pair += 2) {
        u[k] = pair[0];
        v[k] = pair[1];
    }
}

}  // namespace android
