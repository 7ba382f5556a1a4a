#pragma once

#include <nativebase/nativebase.h>

#define ANDROID_NATIVE_WINDOW_MAGIC ANDROID_NATIVE_MAKE_CONSTANT('_', 'w', 'n', 'd')

/** Operations of `ANativeWindow::perform`; the arguments are those of the function named beside each. */
enum ANativeWindowPerform {
    NATIVE_WINDOW_SET_BUFFERS_GEOMETRY = 5,  // ANativeWindow_setBuffersGeometry
    NATIVE_WINDOW_API_CONNECT = 13,          // native_window_api_connect
    NATIVE_WINDOW_API_DISCONNECT = 14,       // native_window_api_disconnect
    NATIVE_WINDOW_SET_USAGE64 = 30,          // native_window_set_usage
};

/** Kinds of producer. A window has one producer at a time. */
enum {
    NATIVE_WINDOW_API_EGL = 1,
    NATIVE_WINDOW_API_CPU = 2,
    NATIVE_WINDOW_API_MEDIA = 3,
    NATIVE_WINDOW_API_CAMERA = 4,
};
