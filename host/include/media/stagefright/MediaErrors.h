#pragma once

#include <utils/Errors.h>

namespace android {

// Statuses of the media calls, in addition to those of utils/Errors.h.
enum {
    MEDIA_ERROR_BASE = -1000,

    ERROR_ALREADY_CONNECTED = MEDIA_ERROR_BASE,
    ERROR_IO = MEDIA_ERROR_BASE - 4,
    ERROR_MALFORMED = MEDIA_ERROR_BASE - 7,
    ERROR_OUT_OF_RANGE = MEDIA_ERROR_BASE - 8,
    ERROR_BUFFER_TOO_SMALL = MEDIA_ERROR_BASE - 9,
    ERROR_UNSUPPORTED = MEDIA_ERROR_BASE - 10,
    ERROR_END_OF_STREAM = MEDIA_ERROR_BASE - 11,

    // Not errors: results of a codec's output dequeue in place of a buffer.
    INFO_FORMAT_CHANGED = MEDIA_ERROR_BASE - 12,
    INFO_DISCONTINUITY = MEDIA_ERROR_BASE - 13,
    INFO_OUTPUT_BUFFERS_CHANGED = MEDIA_ERROR_BASE - 14,
};

/** The client's options after an error: give up, try again, or stop and configure again. */
enum ActionCode {
    ACTION_CODE_FATAL,
    ACTION_CODE_TRANSIENT,
    ACTION_CODE_RECOVERABLE,
};

}  // namespace android
