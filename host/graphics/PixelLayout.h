#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quill::host {

/** P010 semi-planar in the vendor codecs' own numbering, for surface buffers and for input buffers. */
constexpr int32_t kVendorP010 = 0x7FA30C0A;

/** The layout of a buffer's pixels: a luma (or only) plane, then for 4:2:0 a plane of interleaved CbCr pairs. */
struct PixelLayout {
    uint32_t stride = 0;         ///< pixels from one row to the next
    uint32_t bytesPerPixel = 0;  ///< of the luma or only plane
    size_t bytesPerStride = 0;   ///< the same for both planes
    size_t size = 0;             ///< bytes of all planes
};

/** Nothing for a size out of range and for a format that this platform does not allocate. */
std::optional<PixelLayout> layoutOf(uint32_t width, uint32_t height, int32_t format);

}  // namespace quill::host
