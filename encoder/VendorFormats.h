#pragma once

#include <stdint.h>

namespace android {

/** P010 semi-planar in the numbering of the vendor codecs, for input buffers and for surfaces alike. */
constexpr int32_t kVendorP010SemiPlanar = 0x7FA30C0A;

}  // namespace android
