#pragma once

#include <sys/system_properties.h>

#ifdef __cplusplus
extern "C" {
#endif

#define PROPERTY_KEY_MAX PROP_NAME_MAX
#define PROPERTY_VALUE_MAX PROP_VALUE_MAX

/**
 * Writes the property's value to `value`, which has PROPERTY_VALUE_MAX bytes, or `default_value` (which may be null) if
 * the property is unset or empty. A longer value is cut. Returns the length. Thread-safe.
 */
int property_get(const char* key, char* value, const char* default_value);

/** For this process only, read-only properties too. 0, or negative if the key is empty or the value too long. */
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
