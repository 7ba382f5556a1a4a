#pragma once

#include <stdint.h>

#include <nativebase/nativebase.h>

#define ANDROID_NATIVE_WINDOW_MAGIC ANDROID_NATIVE_MAKE_CONSTANT('_', 'w', 'n', 'd')

/** What `ANativeWindow::query` knows. */
enum ANativeWindowQuery {
    NATIVE_WINDOW_WIDTH = 0,
    NATIVE_WINDOW_HEIGHT = 1,
    NATIVE_WINDOW_FORMAT = 2,
    NATIVE_WINDOW_MIN_UNDEQUEUED_BUFFERS = 3,  // how many buffers the consumer may keep
    NATIVE_WINDOW_CONSUMER_USAGE_BITS = 10,
};

/** What `ANativeWindow::perform` does; the arguments are those of the function named beside it. */
enum ANativeWindowPerform {
    NATIVE_WINDOW_SET_BUFFER_COUNT = 4,        // native_window_set_buffer_count
    NATIVE_WINDOW_SET_BUFFERS_GEOMETRY = 5,    // ANativeWindow_setBuffersGeometry
    NATIVE_WINDOW_SET_BUFFERS_TRANSFORM = 6,   // native_window_set_buffers_transform
    NATIVE_WINDOW_SET_BUFFERS_TIMESTAMP = 7,   // native_window_set_buffers_timestamp
    NATIVE_WINDOW_SET_BUFFERS_DIMENSIONS = 8,  // native_window_set_buffers_dimensions
    NATIVE_WINDOW_SET_BUFFERS_FORMAT = 9,      // native_window_set_buffers_format
    NATIVE_WINDOW_SET_SCALING_MODE = 10,       // native_window_set_scaling_mode
    NATIVE_WINDOW_LOCK = 11,                   // ANativeWindow_lock
    NATIVE_WINDOW_UNLOCK_AND_POST = 12,        // ANativeWindow_unlockAndPost
    NATIVE_WINDOW_API_CONNECT = 13,            // native_window_api_connect
    NATIVE_WINDOW_API_DISCONNECT = 14,         // native_window_api_disconnect
    NATIVE_WINDOW_SET_BUFFERS_DATASPACE = 19,  // native_window_set_buffers_data_space
    NATIVE_WINDOW_SET_USAGE64 = 30,            // native_window_set_usage
};

/** Who produces; one at a time. */
enum {
    NATIVE_WINDOW_API_EGL = 1,
    NATIVE_WINDOW_API_CPU = 2,
    NATIVE_WINDOW_API_MEDIA = 3,
    NATIVE_WINDOW_API_CAMERA = 4,
};

/** How a consumer of another size shows the buffers. */
enum {
    NATIVE_WINDOW_SCALING_MODE_FREEZE = 0,
    NATIVE_WINDOW_SCALING_MODE_SCALE_TO_WINDOW = 1,
    NATIVE_WINDOW_SCALING_MODE_SCALE_CROP = 2,
    NATIVE_WINDOW_SCALING_MODE_NO_SCALE_CROP = 3,
};

/** As a timestamp: the time of queueing. */
constexpr int64_t NATIVE_WINDOW_TIMESTAMP_AUTO = INT64_MIN;
