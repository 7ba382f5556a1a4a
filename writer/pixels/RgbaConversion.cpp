#include "Nv12Conversion.h"
#include "RgbaArithmetic.h"

namespace android {

namespace {

constexpr ptrdiff_t kBlock = 32;  // pixels, or chroma pairs

QUILL_KERNEL bool fastChroma(const uint8_t* __restrict rgba, uint8_t* __restrict chroma) {
    uint32_t least = UINT32_MAX;
    for (ptrdiff_t i = 0; i < kBlock; ++i) {
        const Color color = firstColorAt(rgba + kPairBytes * i);
        const int32_t u = fixedSum(color, kU);
        const int32_t v = fixedSum(color, kV);
        least = std::min(least, std::min(fraction(u), fraction(v)));
        const auto pair = static_cast<uint16_t>(static_cast<uint32_t>(u >> kFractionBits) | truncated(v) << 8);
        memcpy(chroma + 2 * i, &pair, sizeof pair);
    }
    return isClear(least);
}

QUILL_KERNEL void exactChroma(const uint8_t* __restrict rgba, ptrdiff_t pairs, uint8_t* __restrict chroma) {
    for (ptrdiff_t i = 0; i < pairs; ++i) {
        const Color color = colorAt(rgba + kPairBytes * i);
        chroma[2 * i] = exact(color, kU);
        chroma[2 * i + 1] = exact(color, kV);
    }
}

QUILL_KERNEL void lumaRow(const uint8_t* rgba, ptrdiff_t count, uint8_t* luma) {
    const ptrdiff_t inBlocks = count / kBlock * kBlock;
    for (ptrdiff_t i = 0; i < inBlocks; i += kBlock) {
        const uint8_t* const block = rgba + kPixelBytes * i;
        if (!fastLuma<kBlock>(block, luma + i)) exactLuma(block, kBlock, luma + i);
    }
    exactLuma(rgba + kPixelBytes * inBlocks, count - inBlocks, luma + inBlocks);
}

/** Blocks of whole pairs only: behind the last pixel of an odd row there may be nothing. */
QUILL_KERNEL void chromaRow(const uint8_t* rgba, ptrdiff_t count, uint8_t* chroma) {
    const ptrdiff_t inBlocks = count / 2 / kBlock * kBlock;
    for (ptrdiff_t i = 0; i < inBlocks; i += kBlock) {
        const uint8_t* const block = rgba + kPairBytes * i;
        if (!fastChroma(block, chroma + 2 * i)) exactChroma(block, kBlock, chroma + 2 * i);
    }
    exactChroma(rgba + kPairBytes * inBlocks, (count + 1) / 2 - inBlocks, chroma + 2 * inBlocks);
}

QUILL_KERNEL void convertRows(const uint8_t* rgba, const FrameGeometry& area, uint8_t* nv12) {
    const ptrdiff_t stride = area.stride;
    uint8_t* chroma = nv12 + static_cast<ptrdiff_t>(area.samples());
    for (ptrdiff_t row = 0; row < area.sliceHeight; ++row, rgba += kPixelBytes * stride) {
        lumaRow(rgba, stride, nv12 + row * stride);
        if (row % 2 != 0) continue;
        chromaRow(rgba, stride, chroma);
        chroma += (stride + 1) / 2 * 2;
    }
}

}  // namespace

void convertRgba8888(const uint8_t* rgba, const FrameGeometry& area, uint8_t* nv12, VectorWidth most) {
    withWidestVectors<convertRows, const uint8_t*, const FrameGeometry&>(most, rgba, area, nv12);
}

}  // namespace android
