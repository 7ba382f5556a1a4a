#pragma once

#include <cstdint>
#include <string>

namespace quill::host {

/**
 * The x265 preset for frames of `framePixels` (a whole grid counts as one frame): small frames get the
 * slower ones, large ones must be done within a camera's time. The property "debug.quill.host.x265.preset"
 * overrides it.
 */
std::string presetFor(int64_t framePixels);

}  // namespace quill::host
