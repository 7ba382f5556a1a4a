#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/CameraFrames.h"

namespace quill::test {

/** A HEIF file (ISO/IEC 23008-12) as an independent reader sees it. */
struct ReadStill {
    std::string error;   ///< empty when all went well
    int shownWidth = 0;  ///< of the primary image, rotation applied
    int shownHeight = 0;
    int topLevelImages = 0;
    Planes planes;  ///< decoded, rotation applied
    /** Bodies of the EXIF items, behind the four bytes that say where the TIFF header is. */
    std::vector<std::vector<uint8_t>> exif;
    std::vector<std::string> xmp;
};

/** `decode` false reads the structure only and leaves the planes empty. */
ReadStill readStill(const std::string& path, bool decode = true);

}  // namespace quill::test
