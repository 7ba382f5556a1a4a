#pragma once

#include <utils/Errors.h>

namespace android {

/** The platform's symbolic name of a status for log lines; "??" for a status that has none. */
const char* statusName(status_t status);

}  // namespace android
