#pragma once

#include <memory>

#include "HevcEngine.h"

namespace quill::host {

/** True if the property "debug.quill.host.encoder" is "free": pictures are then coded by a free engine. */
bool isEncodingFree();

/**
 * An engine that costs nothing. For every picture it returns the same gray picture of the right size, depth and
 * colors, which x265 codes once per process for each set of settings; `qp` and `preset` are ignored. Null, with an
 * error in the log, if x265 refuses the settings. Thread-safe.
 */
std::unique_ptr<HevcEngine> openFreeEngine(const EngineSettings& settings);

}  // namespace quill::host
