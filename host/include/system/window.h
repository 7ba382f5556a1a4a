#pragma once

#include <stdint.h>

#include <android/native_window.h>
#include <apex/window.h>
#include <nativebase/nativebase.h>

/**
 * Where a producer gets buffers from and queues them to. The hooks return 0 or a negative error, and the field order
 * is an interface between binaries. A fence of -1 means no fence; queueing and cancelling take ownership of the fence.
 * A hook that this platform's windows do not have is null.
 */
struct ANativeWindow {
    ANativeWindow() : flags(0), minSwapInterval(0), maxSwapInterval(0), xdpi(0), ydpi(0) {
        common.magic = ANDROID_NATIVE_WINDOW_MAGIC;
        common.version = sizeof(ANativeWindow);
    }
    // Smart pointers pass themselves; native objects keep no record of that.
    void incStrong(const void*) const { common.incRef(const_cast<android_native_base_t*>(&common)); }
    void decStrong(const void*) const { common.decRef(const_cast<android_native_base_t*>(&common)); }

    android_native_base_t common = {};
    const uint32_t flags;
    const int minSwapInterval;
    const int maxSwapInterval;
    const float xdpi;
    const float ydpi;
    intptr_t oem[4] = {};

    int (*setSwapInterval)(ANativeWindow* window, int interval) = nullptr;
    /** Waits until a buffer is free and its fence is signalled. The buffer stays the window's own. */
    int (*dequeueBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer** buffer) = nullptr;
    int (*lockBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    int (*queueBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    int (*query)(const ANativeWindow* window, int what, int* value) = nullptr;
    int (*perform)(ANativeWindow* window, int operation, ...) = nullptr;
    int (*cancelBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    int (*dequeueBuffer)(ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd) = nullptr;
    int (*queueBuffer)(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) = nullptr;
    int (*cancelBuffer)(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) = nullptr;
};

/** GRALLOC_USAGE_* of the buffers dequeued from now on. */
static inline int native_window_set_usage(ANativeWindow* window, uint64_t usage) {
    return window->perform(window, NATIVE_WINDOW_SET_USAGE64, usage);
}

/** NATIVE_WINDOW_API_*; -EINVAL if a producer is connected already. */
static inline int native_window_api_connect(ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_CONNECT, api);
}

/** -EINVAL if this API is not the one that is connected. The caller loses the buffers that it has dequeued. */
static inline int native_window_api_disconnect(ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_DISCONNECT, api);
}

/** Blocks until a buffer is free and may be written. */
static inline int native_window_dequeue_buffer_and_wait(ANativeWindow* window, ANativeWindowBuffer** buffer) {
    return window->dequeueBuffer_DEPRECATED(window, buffer);
}
