#include "PictureLayout.h"

#include <algorithm>
#include <cstring>

namespace quill::host {

namespace {

/** Pitch and slice height of input buffers are multiples of this, as clients lay their tiles out. */
constexpr int kTileSide = 512;

constexpr int kP010UnusedBits = 6;
constexpr ptrdiff_t kP010Bytes = 2;
constexpr int kRgbaBytes = 4;
constexpr int kChromaCentre = 128;

size_t bytesPerLumaSample(SampleLayout layout) {
    switch (layout) {
        case SampleLayout::kP010:
            return kP010Bytes;
        case SampleLayout::kRgba:
            return kRgbaBytes;
        default:
            return 1;
    }
}

/** Whole chroma samples of `size` luma samples, at least one. */
int wholeChroma(int size) { return std::max(1, size / 2); }

template <typename Sample>
Sample* rowOf(PlanarPicture* planar, int plane, int row) {
    const size_t offset = static_cast<size_t>(row) * static_cast<size_t>(planar->planeWidth(plane));
    return reinterpret_cast<Sample*>(planar->planes[plane].data()) + offset;
}

template <typename Sample>
void repeatEdges(PlanarPicture* planar, int plane, int width, int height) {
    const int fullWidth = planar->planeWidth(plane);
    for (int row = 0; row < height; ++row) {
        Sample* const samples = rowOf<Sample>(planar, plane, row);
        std::fill(samples + width, samples + fullWidth, samples[width - 1]);
    }
    const Sample* const last = rowOf<Sample>(planar, plane, height - 1);
    for (int row = height; row < planar->planeHeight(plane); ++row) {
        std::copy(last, last + fullWidth, rowOf<Sample>(planar, plane, row));
    }
}

const uint8_t* sourceRow(const SourcePicture& source, int row) {
    return source.data +
           static_cast<size_t>(row) * static_cast<size_t>(source.stride) * bytesPerLumaSample(source.layout);
}

void copyRows8(const uint8_t* from, int stride, int width, int height, int plane, PlanarPicture* planar) {
    for (int row = 0; row < height; ++row) {
        memcpy(rowOf<uint8_t>(planar, plane, row), from + static_cast<size_t>(row) * static_cast<size_t>(stride),
               static_cast<size_t>(width));
    }
}

void readI420(const SourcePicture& source, PlanarPicture* planar) {
    copyRows8(source.data, source.stride, source.width, source.height, 0, planar);
    const uint8_t* const u = sourceRow(source, source.sliceHeight);
    const uint8_t* const v = u + static_cast<size_t>(source.stride) * static_cast<size_t>(source.sliceHeight) / 4;
    const int width = wholeChroma(source.width);
    const int height = wholeChroma(source.height);
    copyRows8(u, source.stride / 2, width, height, 1, planar);
    copyRows8(v, source.stride / 2, width, height, 2, planar);
}

void readNv12(const SourcePicture& source, PlanarPicture* planar) {
    copyRows8(source.data, source.stride, source.width, source.height, 0, planar);
    const int width = wholeChroma(source.width);
    for (int row = 0; row < wholeChroma(source.height); ++row) {
        const uint8_t* pair = sourceRow(source, source.sliceHeight + row);
        uint8_t* const u = rowOf<uint8_t>(planar, 1, row);
        uint8_t* const v = rowOf<uint8_t>(planar, 2, row);
        for (int i = 0; i < width; ++i, pair += 2) {
            u[i] = pair[0];
            v[i] = pair[1];
        }
    }
}

uint16_t p010Sample(const uint8_t* bytes) {
    return static_cast<uint16_t>((bytes[0] | bytes[1] << 8) >> kP010UnusedBits);
}

void readP010(const SourcePicture& source, PlanarPicture* planar) {
    for (int row = 0; row < source.height; ++row) {
        const uint8_t* sample = sourceRow(source, row);
        uint16_t* const y = rowOf<uint16_t>(planar, 0, row);
        for (int i = 0; i < source.width; ++i, sample += kP010Bytes) y[i] = p010Sample(sample);
    }
    const int width = wholeChroma(source.width);
    for (int row = 0; row < wholeChroma(source.height); ++row) {
        const uint8_t* pair = sourceRow(source, source.sliceHeight + row);
        uint16_t* const u = rowOf<uint16_t>(planar, 1, row);
        uint16_t* const v = rowOf<uint16_t>(planar, 2, row);
        for (int i = 0; i < width; ++i, pair += 2 * kP010Bytes) {
            u[i] = p010Sample(pair);
            v[i] = p010Sample(pair + kP010Bytes);
        }
    }
}

/** The weighted average of 2^`countBits` pixels whose sum is `rgb`, rounded to nearest and clipped to a byte. */
uint8_t weigh(const int32_t (&factors)[3], const int32_t (&rgb)[3], int32_t offset, int countBits) {
    const int shift = RgbToYuv::kFractionBits + countBits;
    const int32_t sum = factors[0] * rgb[0] + factors[1] * rgb[1] + factors[2] * rgb[2];
    const int32_t rounded = (sum + (offset << shift) + (1 << (shift - 1))) >> shift;
    return static_cast<uint8_t>(std::clamp(rounded, 0, 255));
}

void readRgbaLuma(const SourcePicture& source, const RgbToYuv& matrix, PlanarPicture* planar) {
    for (int row = 0; row < source.height; ++row) {
        const uint8_t* pixel = sourceRow(source, row);
        uint8_t* const y = rowOf<uint8_t>(planar, 0, row);
        for (int i = 0; i < source.width; ++i, pixel += kRgbaBytes) {
            y[i] = weigh(matrix.y, {pixel[0], pixel[1], pixel[2]}, matrix.lumaOffset, 0);
        }
    }
}

void readRgbaChroma(const SourcePicture& source, const RgbToYuv& matrix, PlanarPicture* planar) {
    constexpr int kFourPixels = 2;  // log2
    for (int row = 0; row < (source.height + 1) / 2; ++row) {
        const uint8_t* const upper = sourceRow(source, 2 * row);
        const uint8_t* const lower = sourceRow(source, std::min(2 * row + 1, source.height - 1));
        uint8_t* const u = rowOf<uint8_t>(planar, 1, row);
        uint8_t* const v = rowOf<uint8_t>(planar, 2, row);
        for (int i = 0; i < (source.width + 1) / 2; ++i) {
            const int left = 2 * i * kRgbaBytes;
            const int right = std::min(2 * i + 1, source.width - 1) * kRgbaBytes;
            int32_t rgb[3];
            for (int c = 0; c < 3; ++c) {
                rgb[c] = upper[left + c] + upper[right + c] + lower[left + c] + lower[right + c];
            }
            u[i] = weigh(matrix.cb, rgb, kChromaCentre, kFourPixels);
            v[i] = weigh(matrix.cr, rgb, kChromaCentre, kFourPixels);
        }
    }
}

template <typename Sample>
void repeatAllEdges(const SourcePicture& source, PlanarPicture* planar) {
    const bool wholeOnly = source.layout != SampleLayout::kRgba;
    const int chromaWidth = wholeOnly ? wholeChroma(source.width) : (source.width + 1) / 2;
    const int chromaHeight = wholeOnly ? wholeChroma(source.height) : (source.height + 1) / 2;
    repeatEdges<Sample>(planar, 0, source.width, source.height);
    repeatEdges<Sample>(planar, 1, chromaWidth, chromaHeight);
    repeatEdges<Sample>(planar, 2, chromaWidth, chromaHeight);
}

}  // namespace

int bitDepthOf(SampleLayout layout) { return layout == SampleLayout::kP010 ? 10 : 8; }

int alignedToTile(int size) { return (size + kTileSide - 1) / kTileSide * kTileSide; }

size_t bufferBytes(SampleLayout layout, int stride, int sliceHeight) {
    const size_t luma = static_cast<size_t>(stride) * static_cast<size_t>(sliceHeight) * bytesPerLumaSample(layout);
    return layout == SampleLayout::kRgba ? luma : luma + luma / 2;
}

size_t bytesRead(const SourcePicture& picture) {
    const size_t sample = bytesPerLumaSample(picture.layout);
    const size_t stride = static_cast<size_t>(picture.stride);
    const size_t chromaWidth = static_cast<size_t>(wholeChroma(picture.width));
    const size_t lastRow = static_cast<size_t>(wholeChroma(picture.height)) - 1;
    const size_t luma = stride * static_cast<size_t>(picture.sliceHeight) * sample;
    switch (picture.layout) {
        case SampleLayout::kI420:
            return luma + luma / 4 + lastRow * (stride / 2) + chromaWidth;
        case SampleLayout::kRgba:
            return ((static_cast<size_t>(picture.height) - 1) * stride + static_cast<size_t>(picture.width)) * sample;
        default:
            return luma + (lastRow * stride + 2 * chromaWidth) * sample;
    }
}

int codedSize(int size) { return std::max(kMinCodedSize, size + size % 2); }

void PlanarPicture::reshape(int codedWidth, int codedHeight, int depth) {
    width = codedWidth;
    height = codedHeight;
    bitDepth = depth;
    for (int plane = 0; plane < 3; ++plane) {
        planes[plane].resize(static_cast<size_t>(planeWidth(plane)) * static_cast<size_t>(planeHeight(plane)) *
                             bytesPerSample());
    }
}

void toPlanar(const SourcePicture& source, const RgbToYuv& matrix, PlanarPicture* planar) {
    planar->reshape(codedSize(source.width), codedSize(source.height), bitDepthOf(source.layout));
    switch (source.layout) {
        case SampleLayout::kI420:
            readI420(source, planar);
            break;
        case SampleLayout::kNv12:
            readNv12(source, planar);
            break;
        case SampleLayout::kP010:
            readP010(source, planar);
            return repeatAllEdges<uint16_t>(source, planar);
        case SampleLayout::kRgba:
            readRgbaLuma(source, matrix, planar);
            readRgbaChroma(source, matrix, planar);
            break;
    }
    repeatAllEdges<uint8_t>(source, planar);
}

}  // namespace quill::host
