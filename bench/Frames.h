#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/CameraFrames.h"

namespace quill::bench {

using Bytes = std::vector<uint8_t>;
using Format = android::InputColorFormat;
using test::Geometry;

/** The geometry of a frame without padding; a quarter as wide and high when `quick`. */
Geometry tight(int width, int height);
/** 12 megapixels with padding, for the single steps. */
Geometry padded();

std::string photographPath(const std::string& name);
/** The JPEG file of a bundled photograph. */
Bytes readPhotograph(const std::string& name);

/** A photograph as a camera takes it: its EXIF block has no thumbnail. */
constexpr char kPhotograph[] = "phone-3264x2448.jpg";
/** Its EXIF block, from "Exif" on. */
Bytes cameraExif();
/** A camera frame that shows it, scaled to fill every row and column, padding included. */
Bytes cameraFrame(Format format, const Geometry& geometry);

}  // namespace quill::bench
