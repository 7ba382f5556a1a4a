#pragma once

#include <string>

namespace quill::host {

/**
 * The value of a system property, empty when it is unset. The strongest of: `property_set` in this process,
 * the environment variable QUILL_PROPERTIES (see `findOverride`; read at every call), the device's build.prop.
 * Thread-safe. Beneath `property_get`, and unlike that without faults.
 */
std::string propertyValue(const std::string& key);

}  // namespace quill::host
