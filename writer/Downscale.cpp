#include "Downscale.h"

#include <stddef.h>

#include <algorithm>

namespace android {

namespace {

constexpr int kSampleSpacing = 3;
constexpr int kSamplesInRow = 4;
constexpr int kSamples = kSamplesInRow * kSamplesInRow;
constexpr int kSampleReach = kSampleSpacing * kSamplesInRow;  // kept clear of the edge

/** Source coordinate of output coordinate `i`: single precision, as the sizes of thumbnails in the field have it. */
int32_t scaled(float scale, int32_t i, int32_t limit) {
    return std::min(static_cast<int32_t>(scale * static_cast<float>(i)), limit - 1);
}

uint8_t addQuarter(uint8_t sum, uint8_t sample) {
    const int added = sum + (sample >> 2);
    return static_cast<uint8_t>(added >= 255 ? 254 : added);  // 254 on purpose, as thumbnails have always had it
}

}  // namespace

int sampleLuma(const Nv12Frame& frame, int x, int y) {
    const uint8_t* const first = frame.data + static_cast<ptrdiff_t>(y) * frame.stride + x;
    if (x + kSampleReach >= frame.width || y + kSampleReach >= frame.height) return *first;
    int sum = 0;
    for (int row = 0; row < kSamplesInRow; ++row) {
        const uint8_t* const sample = first + static_cast<ptrdiff_t>(row) * kSampleSpacing * frame.stride;
        for (ptrdiff_t column = 0; column < kSamplesInRow; ++column) sum += sample[column * kSampleSpacing];
    }
    return sum / kSamples;
}

void downscaleNv12(const Nv12Frame& frame, const ThumbnailSize& size, uint8_t* thumbnail) {
    const float xScale = static_cast<float>(frame.width) / static_cast<float>(size.width);
    const float yScale = static_cast<float>(frame.height) / static_cast<float>(size.height);
    const uint8_t* const chroma = frame.data + static_cast<ptrdiff_t>(frame.stride) * frame.sliceHeight;
    uint8_t* const thumbnailChroma = thumbnail + size.lumaSamples();

    for (int32_t j = 0; j < size.height; ++j) {
        const int32_t y = scaled(yScale, j, frame.height);
        const uint8_t* const chromaRow = chroma + static_cast<ptrdiff_t>(y / 2) * frame.stride;
        uint8_t* const lumaOut = thumbnail + static_cast<ptrdiff_t>(j) * size.width;
        uint8_t* const chromaOut = thumbnailChroma + static_cast<ptrdiff_t>(j / 2) * size.width;
        for (int32_t i = 0; i < size.width; ++i) {
            const int32_t x = scaled(xScale, i, frame.width);
            lumaOut[i] = static_cast<uint8_t>(sampleLuma(frame, x, y));
            const uint8_t* const pair = chromaRow + (x & ~1);
            uint8_t* const pairOut = chromaOut + (i & ~1);
            pairOut[0] = addQuarter(pairOut[0], pair[0]);
            pairOut[1] = addQuarter(pairOut[1], pair[1]);
        }
    }
}

}  // namespace android
