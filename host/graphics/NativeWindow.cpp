// The C functions over a native window. They use only its hooks, so they work on every window.
#include <errno.h>

#include <system/window.h>

int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format) {
    if (window == nullptr) return -EINVAL;
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_GEOMETRY, width, height, format);
}
