#pragma once

#include <memory>

#include "HevcEngine.h"

namespace quill::host {

/** True when the property "debug.quill.host.encoder" is "free": pictures are to be coded by a `FreeEngine`. */
bool isEncodingFree();

/**
 * An engine that costs nothing: whatever the picture, it gives one grey picture of the right size, depth and
 * colours, which any decoder takes. The grey picture is coded by x265 once per process and kind; `qp` and `preset`
 * say nothing to it. Null, with an error in the log, when x265 does not take the settings. Thread-safe.
 */
std::unique_ptr<HevcEngine> openFreeEngine(const EngineSettings& settings);

}  // namespace quill::host
