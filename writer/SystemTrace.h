#pragma once

// The one place that says which trace tag the library's sections carry; before any other include of the trace API.
#define ATRACE_TAG ATRACE_TAG_GRAPHICS
#include <utils/Trace.h>
