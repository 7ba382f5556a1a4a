#include "Nv12Conversion.h"

#include <stddef.h>
#include <string.h>

#include <algorithm>

namespace android {

namespace {

constexpr int32_t kFewestWithChroma = 4;  // luma samples that share one chroma pair

/** Keeps the high byte of `count` 16-bit little-endian samples. */
QUILL_KERNEL void keepHighBytes(const uint8_t* __restrict source, ptrdiff_t count, uint8_t* __restrict destination) {
    for (ptrdiff_t i = 0; i < count; ++i) {
        uint16_t sample;  // whole: vectors are made of loads that leave no gaps
        memcpy(&sample, source + 2 * i, sizeof sample);
        destination[i] = static_cast<uint8_t>(sample >> 8);
    }
}

QUILL_KERNEL void interleave(const uint8_t* u, const uint8_t* v, ptrdiff_t pairs, uint8_t* destination) {
    for (ptrdiff_t i = 0; i < pairs; ++i) {
        destination[2 * i] = u[i];
        destination[2 * i + 1] = v[i];
    }
}

QUILL_KERNEL void keepHighBytesOfPlanes(const uint8_t* p010, const FrameGeometry& geometry, uint8_t* nv12) {
    const ptrdiff_t luma = geometry.samples();
    const ptrdiff_t pairsInRow = geometry.stride / 2;
    keepHighBytes(p010, luma, nv12);
    for (ptrdiff_t row = 0; row < geometry.sliceHeight / 2; ++row) {
        const ptrdiff_t sample = luma + row * geometry.stride;
        keepHighBytes(p010 + 2 * sample, 2 * pairsInRow, nv12 + sample);
    }
}

QUILL_KERNEL void swapPair(uint8_t* pair) {
    uint16_t both;
    memcpy(&both, pair, sizeof both);
    both = static_cast<uint16_t>(both >> 8 | both << 8);
    memcpy(pair, &both, sizeof both);
}

QUILL_KERNEL void swapRows(uint8_t* frame, const FrameGeometry& geometry) {
    uint8_t* const chroma = frame + geometry.samples();
    for (int64_t row = 0; row < geometry.height / 2; ++row) {
        const int64_t first = row * geometry.stride;
        const int64_t pairs = std::min<int64_t>((geometry.width - 1) / 2 + 1, (geometry.samples() / 2 - first) / 2);
        for (int64_t i = 0; i < pairs; ++i) swapPair(chroma + first + 2 * i);
    }
}

}  // namespace

void convertI420(const uint8_t* i420, const FrameGeometry& geometry, uint8_t* nv12, VectorWidth most) {
    const int64_t luma = geometry.samples();
    memcpy(nv12, i420, static_cast<size_t>(luma));
    if (luma < kFewestWithChroma) return;
    const int64_t quarter = luma / 4;
    withWidestVectors<interleave>(most, i420 + luma, i420 + luma + quarter, static_cast<ptrdiff_t>(quarter),
                                  nv12 + luma);
}

void convertP010(const uint8_t* p010, const FrameGeometry& geometry, uint8_t* nv12, VectorWidth most) {
    if (geometry.sliceHeight >= 1)
        withWidestVectors<keepHighBytesOfPlanes, const uint8_t*, const FrameGeometry&>(most, p010, geometry, nv12);
}

void swapChromaPairs(uint8_t* frame, const FrameGeometry& geometry, VectorWidth most) {
    withWidestVectors<swapRows, uint8_t*, const FrameGeometry&>(most, frame, geometry);
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
