#pragma once

#include <memory>

#include "HevcEngine.h"

namespace quill::host {

/**
 * Engines of tiles between one still and the next. Opening and closing one takes three milliseconds, and x265 3.5 loses
 * a little memory each time. At most two for each core are kept, those that were used last. Thread-safe.
 */
std::unique_ptr<HevcEngine> takeSpareEngine(const EngineSettings& settings);  ///< null when there is none
void keepSpareEngine(const EngineSettings& settings, std::unique_ptr<HevcEngine> engine);

}  // namespace quill::host
