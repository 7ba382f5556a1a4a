#pragma once

#include <stdint.h>
#include <sys/types.h>

#include <android/native_window.h>
#include <apex/window.h>
#include <nativebase/nativebase.h>
#include <system/graphics.h>
#include <vndk/window.h>

/**
 * Where a producer gets buffers from and queues them to. The hooks return 0 or a negative error, and the field order
 * is an interface between binaries. A fence of -1 is none; queueing and cancelling take the fence over, dequeueing
 * hands one to the caller.
 */
struct ANativeWindow {
    ANativeWindow() : flags(0), minSwapInterval(0), maxSwapInterval(0), xdpi(0), ydpi(0) {
        common.magic = ANDROID_NATIVE_WINDOW_MAGIC;
        common.version = sizeof(ANativeWindow);
    }
    // The pointer is what smart pointers hand over; native objects keep no record of it.
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
    /** Waits for the fence itself. */
    int (*dequeueBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer** buffer) = nullptr;
    int (*lockBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    int (*queueBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    int (*query)(const ANativeWindow* window, int what, int* value) = nullptr;
    int (*perform)(ANativeWindow* window, int operation, ...) = nullptr;
    int (*cancelBuffer_DEPRECATED)(ANativeWindow* window, ANativeWindowBuffer* buffer) = nullptr;
    /** Blocks while no buffer is free. The buffer stays the window's own. */
    int (*dequeueBuffer)(ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd) = nullptr;
    int (*queueBuffer)(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) = nullptr;
    int (*cancelBuffer)(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) = nullptr;
};

/** GRALLOC_USAGE_* of the buffers dequeued from now on. */
static inline int native_window_set_usage(ANativeWindow* window, uint64_t usage) {
    return window->perform(window, NATIVE_WINDOW_SET_USAGE64, usage);
}

/** NATIVE_WINDOW_API_*; -EINVAL when a producer is connected already. */
static inline int native_window_api_connect(ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_CONNECT, api);
}

/** -EINVAL when this API is not the one that is connected. Buffers still dequeued are lost to the caller. */
static inline int native_window_api_disconnect(ANativeWindow* window, int api) {
    return window->perform(window, NATIVE_WINDOW_API_DISCONNECT, api);
}

/** Blocks until a buffer is free and may be written: there is no fence left to wait for. */
static inline int native_window_dequeue_buffer_and_wait(ANativeWindow* window, ANativeWindowBuffer** buffer) {
    return window->dequeueBuffer_DEPRECATED(window, buffer);
}

/** How many buffers there are, those that the consumer keeps included. */
static inline int native_window_set_buffer_count(ANativeWindow* window, size_t count) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFER_COUNT, count);
}

/** Pixels; both 0 is the window's own size. */
static inline int native_window_set_buffers_dimensions(ANativeWindow* window, int width, int height) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_DIMENSIONS, width, height);
}

/** HAL_PIXEL_FORMAT_* or a vendor's number; 0 is the window's own format. */
static inline int native_window_set_buffers_format(ANativeWindow* window, int format) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_FORMAT, format);
}

/** Nanoseconds, or NATIVE_WINDOW_TIMESTAMP_AUTO. */
static inline int native_window_set_buffers_timestamp(ANativeWindow* window, int64_t timestamp) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_TIMESTAMP, timestamp);
}

static inline int native_window_set_buffers_data_space(ANativeWindow* window, android_dataspace_t dataSpace) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_DATASPACE, dataSpace);
}

/** HAL_TRANSFORM_*. */
static inline int native_window_set_buffers_transform(ANativeWindow* window, int transform) {
    return window->perform(window, NATIVE_WINDOW_SET_BUFFERS_TRANSFORM, transform);
}

/** NATIVE_WINDOW_SCALING_MODE_*. */
static inline int native_window_set_scaling_mode(ANativeWindow* window, int mode) {
    return window->perform(window, NATIVE_WINDOW_SET_SCALING_MODE, mode);
}
