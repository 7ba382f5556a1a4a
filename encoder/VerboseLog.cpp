#include "VerboseLog.h"

#include <stdlib.h>

#include <cutils/properties.h>

namespace android {

namespace {

int verbosity(const char* defaultLevel) {
    char value[PROPERTY_VALUE_MAX] = {};
    property_get("debug.quill.video.log.enable", value, defaultLevel);
    return atoi(value);
}

}  // namespace

bool isVerboseLogEnabled() { return verbosity("5") >= 5; }

bool isTilingTraceLogEnabled() { return verbosity("0") >= 6; }

}  // namespace android
