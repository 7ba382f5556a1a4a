// Frames to NV12, each against libyuv's routine for the same pair of layouts.
#include <libyuv.h>

#include <memory>

#include "Frames.h"
#include "PixelConversion.h"
#include "Rows.h"
#include "Subjects.h"

namespace quill::bench {

namespace {

using namespace android;
using Bytes = std::vector<uint8_t>;
using Ours = void (*)(const uint8_t* frame, const AllottedArea& area, uint8_t* nv12, VectorWidth most);
using Libyuvs = void (*)(const uint8_t* frame, const AllottedArea& area, uint8_t* nv12);

void yuvI420(const uint8_t* i420, const AllottedArea& area, uint8_t* nv12) {
    const int stride = area.stride, luma = area.lumaSamples();
    libyuv::I420ToNV12(i420, stride, i420 + luma, stride / 2, i420 + luma + luma / 4, stride / 2, nv12, stride,
                       nv12 + luma, stride, stride, area.sliceHeight);
}

// libyuv has no routine from P010 to NV12. Its planes are two of 16-bit samples, of which this one keeps the high
// bytes: the same work.
void yuvP010(const uint8_t* p010, const AllottedArea& area, uint8_t* nv12) {
    constexpr int kHighByte = 256;
    const auto* const samples = reinterpret_cast<const uint16_t*>(p010);
    const int stride = area.stride, luma = area.lumaSamples();
    libyuv::Convert16To8Plane(samples, stride, nv12, stride, kHighByte, stride, area.sliceHeight);
    libyuv::Convert16To8Plane(samples + luma, stride, nv12 + luma, stride, kHighByte, stride, area.sliceHeight / 2);
}

// R, G, B, A in memory is what libyuv calls ABGR. Its arithmetic is another one (limited range, chroma of the mean of
// four pixels); the memory that is read and written is the same.
void yuvRgba(const uint8_t* rgba, const AllottedArea& area, uint8_t* nv12) {
    const int stride = area.stride;
    libyuv::ABGRToNV12(rgba, 4 * stride, nv12, stride, nv12 + area.lumaSamples(), stride, stride, area.sliceHeight);
}

void addConversion(const char* row, const char* format, Ours ours, Libyuvs yuv, const Effort& effort) {
    addPairedRow(row, effort.pairs, [=, geometry = effort.frame, photograph = effort.photograph] {
        const auto frame =
                std::make_shared<Bytes>(cameraFrame(readPhotograph(photograph), formatNamed(format), geometry));
        const AllottedArea area{geometry.stride, geometry.sliceHeight};
        const auto nv12 = std::make_shared<Bytes>(area.nv12Bytes());
        return Sides{[=] { ours(frame->data(), area, nv12->data(), kWidestVectors); },
                     [=] { yuv(frame->data(), area, nv12->data()); }};
    });
}

}  // namespace

void addConversions(const Effort& effort) {
    addConversion("convert/i420", "i420", convertI420, yuvI420, effort);
    addConversion("convert/p010", "p010", convertP010, yuvP010, effort);
    addConversion("convert/rgba", "rgba", convertRgba8888, yuvRgba, effort);
}

}  // namespace quill::bench
