#include "FrameBytes.h"

#include <algorithm>

#include "InputColorFormat.h"

namespace android {

namespace {

constexpr int64_t kBytesRgba = 4;  // a pixel
constexpr int64_t kBytesP010 = 2;  // a sample

int64_t roundedUpToEven(int64_t samples) { return samples + samples % 2; }

/** Samples at the end of a 4:2:0 frame that hold nothing of the picture. */
int64_t tailSamples(int32_t width, int32_t stride, int32_t colorFormat) {
    const int64_t padding = stride - roundedUpToEven(width);
    if (colorFormat == FORMAT_I420) return std::max<int64_t>(0, stride / 2 - roundedUpToEven(width) / 2);
    return std::max<int64_t>(0, padding) + 1;
}

}  // namespace

FrameBytes frameBytes(int32_t width, int32_t stride, int32_t sliceHeight, int32_t colorFormat) {
    const int64_t samples = int64_t{stride} * sliceHeight;
    if (colorFormat == FORMAT_RGBA8888) return {kBytesRgba * samples, kBytesRgba * samples};
    const int64_t sampleBytes = colorFormat == FORMAT_P010 ? kBytesP010 : 1;
    const int64_t whole = (samples + samples / 2) * sampleBytes;
    return {whole, whole - tailSamples(width, stride, colorFormat) * sampleBytes};
}

}  // namespace android
