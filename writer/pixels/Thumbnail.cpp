#include "Thumbnail.h"

#include <stddef.h>

#include <algorithm>

#include "RgbaArithmetic.h"

namespace android {

namespace {

constexpr int kSampleSpacing = 3;
constexpr int kSamplesInRow = 4;
constexpr int kSamples = kSamplesInRow * kSamplesInRow;
constexpr int kSampleReach = kSampleSpacing * kSamplesInRow;  // kept clear of the edge

constexpr uint8_t kNeutral = 128;

/** One 8-bit sample of a plane in every `column` bytes; of 16-bit samples the high one. */
struct SampleGrid {
    const uint8_t* first;
    ptrdiff_t column;
    ptrdiff_t pitchTwice;  ///< a chroma row of an I420 frame of odd stride starts half a byte off, truncated

    const uint8_t* at(ptrdiff_t x, ptrdiff_t y) const { return first + x * column + y * pitchTwice / 2; }
};

struct Pair {
    uint8_t u, v;
};

/** A frame with a luma plane, and its chroma as far as it has whole pairs and rows. */
struct YuvFrame {
    SampleGrid luma, u, v;
    int32_t lastPair, lastRow;

    int lumaAt(int x, int y) const { return *luma.at(x, y); }
    int meanLuma(int x, int y) const {
        int sum = 0;
        for (int row = 0; row < kSamplesInRow; ++row) {
            const uint8_t* const sample = luma.at(x, y + row * kSampleSpacing);
            for (int i = 0; i < kSamplesInRow; ++i) sum += sample[ptrdiff_t{i} * kSampleSpacing * luma.column];
        }
        return sum / kSamples;
    }
    Pair pairAt(int x, int y) const {
        const int column = std::min(x / 2, lastPair), row = std::min(y / 2, lastRow);
        return {*u.at(column, row), *v.at(column, row)};
    }
};

/** Colors become luma and chroma as they are sampled; chroma is that of the top left pixel of four. */
struct RgbaFrame {
    const uint8_t* first;
    ptrdiff_t pitch;

    QUILL_KERNEL const uint8_t* at(int x, int y) const { return first + y * pitch + x * kPixelBytes; }
    QUILL_KERNEL int lumaAt(int x, int y) const { return exact(colorAt(at(x, y)), kLuma); }
    QUILL_KERNEL int meanLuma(int x, int y) const {
        uint8_t pixels[kSamples * kPixelBytes], luma[kSamples];
        uint8_t* next = pixels;
        for (int row = 0; row < kSamplesInRow; ++row) {
            const uint8_t* const sample = at(x, y + row * kSampleSpacing);
            for (int i = 0; i < kSamplesInRow; ++i, next += kPixelBytes) {
                memcpy(next, sample + ptrdiff_t{i} * kSampleSpacing * kPixelBytes, kPixelBytes);
            }
        }
        if (!fastLuma<kSamples>(pixels, luma)) exactLuma(pixels, kSamples, luma);
        int sum = 0;
        for (const uint8_t sample : luma) sum += sample;
        return sum / kSamples;
    }
    QUILL_KERNEL Pair pairAt(int x, int y) const {
        const Color color = colorAt(at(x & ~1, y & ~1));
        return {exact(color, kU), exact(color, kV)};
    }
};

YuvFrame wholePairsOf(const uint8_t* frame, const FrameFormat& format, const FrameGeometry& g) {
    const ptrdiff_t bytes = format.sampleBytes, samples = static_cast<ptrdiff_t>(g.samples()), stride = g.stride;
    const uint8_t* const high = frame + bytes - 1;  // little-endian
    YuvFrame source{{high, bytes, 2 * bytes * stride}, {}, {}, g.stride / 2 - 1, g.sliceHeight / 2 - 1};
    if (source.lastPair < 0 || source.lastRow < 0) {
        source.u = source.v = {&kNeutral, 0, 0};
    } else if (format.chroma == Chroma::kPlanar) {
        source.u = {high + bytes * samples, bytes, bytes * stride};
        source.v = {source.u.first + bytes * (samples / 4), bytes, bytes * stride};
    } else {
        source.u = {high + bytes * samples, 2 * bytes, 2 * bytes * stride};
        source.v = {source.u.first + bytes, 2 * bytes, 2 * bytes * stride};
    }
    return source;
}

/** A conversion's result: with an odd stride pairs lie across the ends of rows. */
YuvFrame allOf(const uint8_t* nv12, const FrameGeometry& g) {
    const ptrdiff_t stride = g.stride;
    const uint8_t* const chroma = nv12 + static_cast<ptrdiff_t>(g.samples());
    return {{nv12, 1, 2 * stride}, {chroma, 2, 2 * stride}, {chroma + 1, 2, 2 * stride}, INT32_MAX, INT32_MAX};
}

/** Source coordinate of output coordinate `i`: in single precision, on purpose. */
QUILL_KERNEL int32_t scaled(float scale, int32_t i, int32_t limit) {
    return std::min(static_cast<int32_t>(scale * static_cast<float>(i)), limit - 1);
}

QUILL_KERNEL uint8_t addQuarter(uint8_t sum, uint8_t sample) {
    const int added = sum + (sample >> 2);
    return static_cast<uint8_t>(added >= 255 ? 254 : added);  // 254 on purpose
}

template <typename Source>
QUILL_KERNEL int reducedLuma(const Source& source, const FrameGeometry& geometry, int x, int y) {
    const bool inside = x + kSampleReach < geometry.width && y + kSampleReach < geometry.height;
    return inside ? source.meanLuma(x, y) : source.lumaAt(x, y);
}

template <typename Source>
QUILL_KERNEL void reduce(const Source& source, const FrameGeometry& geometry, const ThumbnailSize& size,
                         uint8_t* thumbnail) {
    const float xScale = static_cast<float>(geometry.width) / static_cast<float>(size.width);
    const float yScale = static_cast<float>(geometry.height) / static_cast<float>(size.height);
    for (int32_t j = 0; j < size.height; ++j) {
        const int32_t y = scaled(yScale, j, geometry.height);
        uint8_t* const luma = thumbnail + static_cast<ptrdiff_t>(j) * size.width;
        uint8_t* const chroma = thumbnail + static_cast<ptrdiff_t>(size.height + j / 2) * size.width;
        for (int32_t i = 0; i < size.width; ++i) {
            const int32_t x = scaled(xScale, i, geometry.width);
            luma[i] = static_cast<uint8_t>(reducedLuma(source, geometry, x, y));
            const Pair pair = source.pairAt(x, y);
            uint8_t* const out = chroma + (i & ~1);
            out[0] = addQuarter(out[0], pair.u);
            out[1] = addQuarter(out[1], pair.v);
        }
    }
}

QUILL_KERNEL void reduceRgba(const RgbaFrame& source, const FrameGeometry& geometry, const ThumbnailSize& size,
                             uint8_t* thumbnail) {
    reduce(source, geometry, size, thumbnail);
}

}  // namespace

int sampleLuma(const uint8_t* nv12, const FrameGeometry& geometry, int x, int y) {
    return reducedLuma(allOf(nv12, geometry), geometry, x, y);
}

void downscaleNv12(const uint8_t* nv12, const FrameGeometry& geometry, const ThumbnailSize& size, uint8_t* thumbnail) {
    reduce(allOf(nv12, geometry), geometry, size, thumbnail);
}

void sampleThumbnail(const uint8_t* frame, const FrameFormat& format, const FrameGeometry& geometry,
                     const ThumbnailSize& size, uint8_t* thumbnail) {
    if (format.chroma != Chroma::kNone) return reduce(wholePairsOf(frame, format, geometry), geometry, size, thumbnail);
    const RgbaFrame source{frame, kPixelBytes * static_cast<ptrdiff_t>(geometry.stride)};
    withWidestVectors<reduceRgba, const RgbaFrame&, const FrameGeometry&, const ThumbnailSize&>(
            kWidestVectors, source, geometry, size, thumbnail);
}

}  // namespace android
