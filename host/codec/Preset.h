#pragma once

#include <cstdint>
#include <string>

namespace quill::host {

/**
 * The x265 preset for frames of `framePixels` (a whole grid is one frame): the larger the frame, the faster the preset.
 * The property "debug.quill.host.x265.preset" overrides it.
 */
std::string presetFor(int64_t framePixels);

}  // namespace quill::host
