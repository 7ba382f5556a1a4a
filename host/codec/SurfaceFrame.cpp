#define LOG_TAG "QuillPlatform"

#include "SurfaceFrame.h"

#include <log/log.h>
#include <system/graphics.h>

#include "BufferContents.h"
#include "PixelLayout.h"

namespace quill::host {

namespace {

struct FormatRow {
    int format;
    SampleLayout layout;
};

constexpr FormatRow kFormats[] = {
        {HAL_PIXEL_FORMAT_RGBA_8888, SampleLayout::kRgba},
        {HAL_PIXEL_FORMAT_RGBX_8888, SampleLayout::kRgba},
        {HAL_PIXEL_FORMAT_YCBCR_P010, SampleLayout::kP010},
        {kVendorP010, SampleLayout::kP010},
};

std::optional<SampleLayout> layoutOfFormat(int format) {
    for (const FormatRow& row : kFormats) {
        if (row.format == format) return row.layout;
    }
    return std::nullopt;
}

}  // namespace

std::optional<SourcePicture> pictureIn(const android::GraphicBuffer& frame, int width, int height) {
    const std::optional<SampleLayout> layout = layoutOfFormat(frame.format);
    if (!layout || frame.width < width || frame.height < height) {
        ALOGE("The encoder cannot read a %dx%d picture from a %dx%d surface buffer of format 0x%x", width, height,
              frame.width, frame.height, static_cast<unsigned>(frame.format));
        return std::nullopt;
    }
    const BufferContents contents = BufferContents::of(frame);
    const SourcePicture picture{*layout, contents.data, width, height, frame.stride, frame.height};
    if (contents.data == nullptr || contents.size < bytesRead(picture)) {
        ALOGE("A surface buffer of %zu bytes is too small for a %dx%d picture", contents.size, width, height);
        return std::nullopt;
    }
    return picture;
}

}  // namespace quill::host
