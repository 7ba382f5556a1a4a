#pragma once

#include <stddef.h>
#include <stdint.h>

#include "Thumbnail.h"

namespace android {

/**
 * Compresses an 8-bit NV12 picture to a baseline 4:2:0 JPEG (ITU-T T.81) of quality 80 at `out`. Returns its size in
 * bytes; -1, with nothing promised about `out`, for a size that JPEG cannot hold, a JPEG larger than `capacity`, or an
 * error of the JPEG library, which never ends the process.
 */
int compressThumbnail(const uint8_t* nv12, const ThumbnailSize& size, uint8_t* out, size_t capacity);

/** Whether a thumbnail of this size can be a JPEG at all. */
bool isJpegSize(const ThumbnailSize& size);

}  // namespace android
