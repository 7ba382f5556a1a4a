#pragma once

#include <string>

namespace quill::host {

/**
 * The folder of the device that this process runs on, from the environment variable QUILL_DEVICE: a folder when it
 * has a slash, else a name among the devices that come with the stand-in; `workstation` when unset or empty. The folder
 * need not exist: an unknown device is logged as an error once and has no properties and no codecs. Thread-safe.
 */
std::string deviceFolder();

}  // namespace quill::host
