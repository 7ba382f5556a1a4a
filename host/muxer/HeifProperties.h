#pragma once

#include "HevcConfig.h"

namespace quill::host {

// One function per property box of `ipco`; each returns the whole box.

Bytes decoderConfigurationBox(const HevcConfig& config);
/** Image size in pixels before cropping and rotation. */
Bytes spatialExtentsBox(uint32_t width, uint32_t height);
Bytes pixelInformationBox(const HevcSps& sps);
Bytes colorBox(const ColorAspects& aspects);
/** Keeps the top left `width` x `height` of a picture that is larger. */
Bytes cleanApertureBox(uint32_t width, uint32_t height, const HevcSps& coded);
/** `clockwiseDegrees`: 90, 180 or 270. */
Bytes rotationBox(int clockwiseDegrees);

}  // namespace quill::host
