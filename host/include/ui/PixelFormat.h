#pragma once

#include <stdint.h>

#include <system/graphics.h>

namespace android {

/** HAL_PIXEL_FORMAT_* or a vendor's number. */
typedef int32_t PixelFormat;

enum {
    PIXEL_FORMAT_UNKNOWN = 0,  // the platform chooses
    PIXEL_FORMAT_RGBA_8888 = HAL_PIXEL_FORMAT_RGBA_8888,
    PIXEL_FORMAT_RGBX_8888 = HAL_PIXEL_FORMAT_RGBX_8888,
    PIXEL_FORMAT_RGB_888 = HAL_PIXEL_FORMAT_RGB_888,
    PIXEL_FORMAT_RGB_565 = HAL_PIXEL_FORMAT_RGB_565,
    PIXEL_FORMAT_RGBA_1010102 = HAL_PIXEL_FORMAT_RGBA_1010102,
};

}  // namespace android
