// The C functions over a native window: nothing but its hooks, so they work on every window there is.
#include <errno.h>

#include <system/window.h>

namespace {

int32_t queried(ANativeWindow* window, int what) {
    if (window == nullptr) return -EINVAL;
    int value = 0;
    const int err = window->query(window, what, &value);
    return err < 0 ? err : value;
}

}  // namespace

void ANativeWindow_acquire(ANativeWindow* window) {
    if (window != nullptr) window->incStrong(window);
}

void ANativeWindow_release(ANativeWindow* window) {
    if (window != nullptr) window->decStrong(window);
}

int32_t ANativeWindow_getWidth(ANativeWindow* window) { return queried(window, NATIVE_WINDOW_WIDTH); }

int32_t ANativeWindow_getHeight(ANativeWindow* window) { return queried(window, NATIVE_WINDOW_HEIGHT); }

int32_t ANativeWindow_getFormat(ANativeWindow* window) { return queried(window, NATIVE_WINDOW_FORMAT); }

int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format) {
    if (window == nullptr) return -EINVAL;
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_GEOMETRY, width, height, format);
}

int32_t ANativeWindow_lock(ANativeWindow* window, ANativeWindow_Buffer* outBuffer, ARect* inOutDirtyBounds) {
    if (window == nullptr) return -EINVAL;
    return window->perform(window, NATIVE_WINDOW_LOCK, outBuffer, inOutDirtyBounds);
}

int32_t ANativeWindow_unlockAndPost(ANativeWindow* window) {
    if (window == nullptr) return -EINVAL;
    return window->perform(window, NATIVE_WINDOW_UNLOCK_AND_POST);
}

int ANativeWindow_dequeueBuffer(ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd) {
    return window == nullptr ? -EINVAL : window->dequeueBuffer(window, buffer, fenceFd);
}

int ANativeWindow_queueBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
    return window == nullptr ? -EINVAL : window->queueBuffer(window, buffer, fenceFd);
}

int ANativeWindow_cancelBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
    return window == nullptr ? -EINVAL : window->cancelBuffer(window, buffer, fenceFd);
}

int ANativeWindow_setUsage(ANativeWindow* window, uint64_t usage) {
    return window == nullptr ? -EINVAL : native_window_set_usage(window, usage);
}
