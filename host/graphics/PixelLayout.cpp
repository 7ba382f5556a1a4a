#include "PixelLayout.h"

#include <system/graphics.h>

namespace quill::host {

namespace {

/** The stride is a multiple of this and always larger than the width, so that code which mixes up the two fails. */
constexpr uint32_t kStrideAlignment = 64;
/** Keeps every size below 2^31 bytes. */
constexpr uint32_t kMaxSide = 16384;

struct Format {
    int32_t code;
    uint32_t bytesPerPixel;
    bool hasChromaPlane;
};

constexpr Format kFormats[] = {
        {HAL_PIXEL_FORMAT_RGBA_8888, 4, false},
        {HAL_PIXEL_FORMAT_RGBX_8888, 4, false},
        {HAL_PIXEL_FORMAT_YCBCR_420_888, 1, true},
        {HAL_PIXEL_FORMAT_YCBCR_P010, 2, true},
        {kVendorP010, 2, true},
};

const Format* findFormat(int32_t code) {
    for (const Format& format : kFormats) {
        if (format.code == code) return &format;
    }
    return nullptr;
}

bool isAllocatable(uint32_t side) { return side >= 1 && side <= kMaxSide; }

}  // namespace

std::optional<PixelLayout> layoutOf(uint32_t width, uint32_t height, int32_t format) {
    const Format* const found = findFormat(format);
    if (found == nullptr || !isAllocatable(width) || !isAllocatable(height)) return std::nullopt;
    PixelLayout layout;
    layout.stride = (width / kStrideAlignment + 1) * kStrideAlignment;
    layout.bytesPerPixel = found->bytesPerPixel;
    layout.bytesPerStride = size_t{layout.stride} * found->bytesPerPixel;
    layout.size = layout.bytesPerStride * height;
    if (found->hasChromaPlane) layout.size += layout.bytesPerStride * ((height + 1) / 2);
    return layout;
}

}  // namespace quill::host
