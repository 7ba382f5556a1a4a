#include "Frame.h"

#include <algorithm>

namespace android {

namespace {

constexpr FrameFormat kFormats[] = {
        {FORMAT_I420, 1, 8, Chroma::kPlanar, false, kCodecPlanar, TileInput::kBuffers},
        {FORMAT_P010, 2, 10, Chroma::kInterleaved, false, kVendorP010SemiPlanar, TileInput::kVendorSurface},
        {FORMAT_RGBA8888, 4, 8, Chroma::kNone, false, kCodecSurface, TileInput::kSurface},
        {FORMAT_NV12, 1, 8, Chroma::kInterleaved, false, kCodecSemiPlanar, TileInput::kBuffers},
        {FORMAT_NV21, 1, 8, Chroma::kInterleaved, true, kCodecSemiPlanar, TileInput::kBuffers},
};

int64_t roundedUpToEven(int64_t samples) { return samples + samples % 2; }

/** Samples at the end of a frame that hold nothing of the picture. */
int64_t tailSamples(Chroma chroma, const FrameGeometry& g) {
    if (chroma == Chroma::kNone) return 0;
    if (chroma == Chroma::kPlanar) return std::max<int64_t>(0, g.stride / 2 - roundedUpToEven(g.width) / 2);
    return std::max<int64_t>(0, g.stride - roundedUpToEven(g.width)) + 1;
}

}  // namespace

const FrameFormat* findFrameFormat(int32_t code) {
    for (const FrameFormat& format : kFormats) {
        if (format.code == code) return &format;
    }
    return nullptr;
}

int getBitsPerPixel(int fmt) {
    constexpr int kYuv8 = 12;
    const FrameFormat* const format = findFrameFormat(fmt);
    return format == nullptr ? kYuv8 : static_cast<int>(format->bytes(2) * 4);
}

bool FrameGeometry::isSane() const {
    constexpr int32_t kLargestSampleBytes = 4;
    return width >= 1 && height >= 1 && stride >= width && sliceHeight >= height &&
           samples() <= INT32_MAX / kLargestSampleBytes;
}

FrameBytes frameBytes(int32_t colorFormat, const FrameGeometry& geometry) {
    const FrameFormat* const known = findFrameFormat(colorFormat);
    const FrameFormat& format = known == nullptr ? *findFrameFormat(FORMAT_NV12) : *known;
    const int64_t whole = format.bytes(geometry.samples());
    return {whole, whole - tailSamples(format.chroma, geometry) * format.sampleBytes};
}

}  // namespace android
