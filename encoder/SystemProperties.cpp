#include "SystemProperties.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <cutils/properties.h>

namespace android {

namespace {

constexpr char kVerbosity[] = "debug.quill.video.log.enable";

struct Property {
    Property(const char* key, const char* fallback) { property_get(key, value, fallback); }
    char value[PROPERTY_VALUE_MAX] = {};
};

}  // namespace

int propertyNumber(const char* key, const char* fallback) { return atoi(Property(key, fallback).value); }

bool isChip(const char* prefix) {
    return strncasecmp(Property("ro.soc.model", "unknown").value, prefix, strlen(prefix)) == 0;
}

bool isVerboseLogEnabled() { return propertyNumber(kVerbosity, "5") >= 5; }

bool isTilingTraceLogEnabled() { return propertyNumber(kVerbosity, "0") >= 6; }

}  // namespace android
