#pragma once

#include <utils/Errors.h>

namespace android {

/** The platform's symbolic name of a status for log lines; "??" for a status that has none. */
const char* statusName(status_t status);
/** -status, in wrapping arithmetic: the platform's smallest status has no opposite. */
int negated(status_t status);
/** The system's text for error number -status. */
const char* statusText(status_t status);

}  // namespace android
