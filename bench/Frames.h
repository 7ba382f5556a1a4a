#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/CameraFrames.h"

namespace quill::bench {

/** A bundled photograph. */
struct Photograph {
    int width;
    int height;
    std::vector<uint8_t> yuv;   ///< three bytes a pixel, full-range BT.601
    std::vector<uint8_t> exif;  ///< its EXIF block, from "Exif" on; empty without one
};

std::string photographPath(const std::string& name);
/** Throws when there is none of that name. */
Photograph readPhotograph(const std::string& name);

/** A camera frame that shows the photograph, repeated until every row and column, padding included, is filled. */
std::vector<uint8_t> cameraFrame(const Photograph& photograph, android::InputColorFormat format,
                                 const test::Geometry& geometry);

/** By the names of the command line: i420, p010, rgba, nv12, nv21. Throws for any other. */
android::InputColorFormat formatNamed(const std::string& name);

}  // namespace quill::bench
