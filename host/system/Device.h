#pragma once

#include <string>

namespace quill::host {

/**
 * The folder of the device that this process runs on. The environment variable QUILL_DEVICE is a folder if it has a
 * slash, otherwise one of the stand-in's own devices; if it is unset or empty, the device is `workstation`. An unknown
 * device is logged as an error once, and has no properties and no codecs. Thread-safe.
 */
std::string deviceFolder();

}  // namespace quill::host
