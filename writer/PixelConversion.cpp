#include "PixelConversion.h"

#include <stddef.h>
#include <string.h>

namespace android {

namespace {

constexpr int32_t kFewestWithChroma = 4;  // luma samples that share one chroma pair

/** Truncates toward zero and bounds above only. */
uint8_t clampedAbove(double value) {
    const int truncated = static_cast<int>(value);
    return static_cast<uint8_t>(truncated >= 255 ? 255 : truncated);
}

/** Keeps the high byte of `count` 16-bit little-endian samples. */
void keepHighBytes(const uint8_t* source, ptrdiff_t count, uint8_t* destination) {
    for (ptrdiff_t i = 0; i < count; ++i) destination[i] = source[2 * i + 1];
}

void interleave(const uint8_t* u, const uint8_t* v, ptrdiff_t pairs, uint8_t* destination) {
    for (ptrdiff_t i = 0; i < pairs; ++i) {
        destination[2 * i] = u[i];
        destination[2 * i + 1] = v[i];
    }
}

}  // namespace

void convertI420(const uint8_t* i420, const AllottedArea& area, uint8_t* nv12) {
    const int64_t luma = int64_t{area.stride} * area.sliceHeight;
    memcpy(nv12, i420, static_cast<size_t>(luma));
    if (luma < kFewestWithChroma) return;
    const int64_t quarter = luma / 4;
    interleave(i420 + luma, i420 + luma + quarter, quarter, nv12 + luma);
}

void convertP010(const uint8_t* p010, const AllottedArea& area, uint8_t* nv12) {
    if (area.sliceHeight < 1) return;
    const ptrdiff_t luma = area.lumaSamples();
    const ptrdiff_t pairsInRow = area.stride / 2;
    keepHighBytes(p010, luma, nv12);
    for (ptrdiff_t row = 0; row < area.sliceHeight / 2; ++row) {
        const ptrdiff_t sample = luma + row * area.stride;
        keepHighBytes(p010 + 2 * sample, 2 * pairsInRow, nv12 + sample);
    }
}

uint8_t rgbToLuma(uint8_t r, uint8_t g, uint8_t b) { return clampedAbove(r * 0.299 + g * 0.587 + b * 0.114); }

uint8_t rgbToU(uint8_t r, uint8_t g, uint8_t b) {
    return clampedAbove(r * -0.14713 + g * -0.28886 + b * 0.436 + 128.0);
}

// No lower bound, on purpose: strong cyan goes below zero and keeps its low eight bits. Thumbnails in the field are
// compared with what this arithmetic has always given.
uint8_t rgbToV(uint8_t r, uint8_t g, uint8_t b) {
    return clampedAbove(r * 0.615 + g * -0.51498 + b * -0.10001 + 128.0);
}

void convertRgba8888(const uint8_t* rgba, const AllottedArea& area, uint8_t* nv12) {
    uint8_t* luma = nv12;
    uint8_t* chroma = nv12 + static_cast<ptrdiff_t>(area.lumaSamples());
    for (int32_t row = 0; row < area.sliceHeight; ++row) {
        for (int32_t column = 0; column < area.stride; ++column, rgba += 4) {
            *luma++ = rgbToLuma(rgba[0], rgba[1], rgba[2]);
            if (row % 2 != 0 || column % 2 != 0) continue;
            *chroma++ = rgbToU(rgba[0], rgba[1], rgba[2]);
            *chroma++ = rgbToV(rgba[0], rgba[1], rgba[2]);
        }
    }
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
