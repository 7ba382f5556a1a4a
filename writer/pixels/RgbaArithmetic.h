#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>

#include "WidestVectors.h"

// Colors to full-range BT.601, for kernels that go over many pixels.
namespace android {

// The definition is in double precision. Sums of a block of pixels are taken in fixed point first: where none of them
// comes close to a whole number, truncating the one is truncating the other, and what is left goes by the definition.

constexpr ptrdiff_t kPixelBytes = 4;
constexpr ptrdiff_t kPairBytes = 2 * kPixelBytes;  // of the two pixels that share a chroma pair in their row
constexpr int kFractionBits = 22;                  // beside a sign and 9 bits: sums lie between -29 and 285
/** More than three weights, each rounded by half a unit at most, are off by for a component of 255. */
constexpr int32_t kMargin = 512;

/** What a sum of weighed components is made with. */
struct Weights {
    double r, g, b, offset;
};
constexpr Weights kLuma{0.299, 0.587, 0.114, 0};
constexpr Weights kU{-0.14713, -0.28886, 0.436, 128};
constexpr Weights kV{0.615, -0.51498, -0.10001, 128};

struct Color {
    int32_t r, g, b;
};

/** Of a pixel read as one little-endian word. */
QUILL_KERNEL Color colorOf(uint32_t pixel) {
    return {static_cast<int32_t>(pixel & 0xFF), static_cast<int32_t>(pixel >> 8 & 0xFF),
            static_cast<int32_t>(pixel >> 16 & 0xFF)};
}

QUILL_KERNEL Color colorAt(const uint8_t* rgba) {
    uint32_t pixel;
    memcpy(&pixel, rgba, sizeof pixel);
    return colorOf(pixel);
}

/** Of the first of two pixels. Both are read: vectors are made of loads that leave no gaps. */
QUILL_KERNEL Color firstColorAt(const uint8_t* rgba) {
    uint64_t pixels;
    memcpy(&pixels, rgba, sizeof pixels);
    return colorOf(static_cast<uint32_t>(pixels));
}

/**
 * The definition: truncated toward zero and bounded above only. Strong cyan goes below zero and keeps its low eight
 * bits, on purpose: these bytes are part of the interface.
 */
QUILL_KERNEL uint8_t exact(const Color& c, const Weights& w) {
    const double sum = c.r * w.r + c.g * w.g + c.b * w.b + w.offset;
    return static_cast<uint8_t>(static_cast<int>(std::min(sum, 255.0)));
}

constexpr int32_t fixedPoint(double value) {
    return static_cast<int32_t>(value * (1 << kFractionBits) + (value < 0 ? -0.5 : 0.5));
}

/** The sum, a margin too high. */
QUILL_KERNEL int32_t fixedSum(const Color& c, const Weights& w) {
    return c.r * fixedPoint(w.r) + c.g * fixedPoint(w.g) + c.b * fixedPoint(w.b) + fixedPoint(w.offset) + kMargin;
}

/** The fraction of a sum, so that the least of several can be found. */
QUILL_KERNEL uint32_t fraction(int32_t sum) { return static_cast<uint32_t>(sum) << (32 - kFractionBits); }

QUILL_KERNEL bool isClear(uint32_t leastFraction) { return leastFraction >= fraction(2 * kMargin); }

/** As the definition has it, for a sum that is clear of whole numbers. */
QUILL_KERNEL uint32_t truncated(int32_t sum) {
    const int32_t towardZero = (sum >> kFractionBits) - (sum >> 31);
    return static_cast<uint32_t>(std::min(towardZero, 255)) & 0xFF;
}

/** The luma of `kCount` pixels. False, with nothing promised about `luma`, when a sum is too close to a whole number.
 */
template <ptrdiff_t kCount>
QUILL_KERNEL bool fastLuma(const uint8_t* __restrict rgba, uint8_t* __restrict luma) {
    uint32_t least = UINT32_MAX;
    for (ptrdiff_t i = 0; i < kCount; ++i) {
        const int32_t y = fixedSum(colorAt(rgba + kPixelBytes * i), kLuma);
        least = std::min(least, fraction(y));
        luma[i] = static_cast<uint8_t>(y >> kFractionBits);
    }
    return isClear(least);
}

QUILL_KERNEL void exactLuma(const uint8_t* __restrict rgba, ptrdiff_t count, uint8_t* __restrict luma) {
    for (ptrdiff_t i = 0; i < count; ++i) luma[i] = exact(colorAt(rgba + kPixelBytes * i), kLuma);
}

}  // namespace android
