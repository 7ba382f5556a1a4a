#pragma once

#include <stdint.h>
#include <sys/system_properties.h>

#ifdef __cplusplus
extern "C" {
#endif

#define PROPERTY_KEY_MAX PROP_NAME_MAX
#define PROPERTY_VALUE_MAX PROP_VALUE_MAX

/**
 * Writes the property's value, or `default_value` (which may be null) when it is unset or empty, to `value`, which
 * has PROPERTY_VALUE_MAX bytes. Returns its length; a longer one is cut. Thread-safe, as all of these.
 */
int property_get(const char* key, char* value, const char* default_value);

/** 1, y, yes, true, on and 0, n, no, false, off; `default_value` for anything else. */
int8_t property_get_bool(const char* key, int8_t default_value);

/** Decimal, 0x or octal number at the start of the value; `default_value` when there is none or it is out of range. */
int32_t property_get_int32(const char* key, int32_t default_value);
int64_t property_get_int64(const char* key, int64_t default_value);

/** For this process only, read-only properties too. 0, or negative when the key is empty or the value too long. */
int property_set(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
