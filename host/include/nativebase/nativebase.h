#pragma once

#include <stdint.h>

#include <cutils/native_handle.h>

/** Four characters as one number: the magic of a native object. */
#define ANDROID_NATIVE_MAKE_CONSTANT(a, b, c, d) (((a) << 24) | ((b) << 16) | ((c) << 8) | (d))
#define ANDROID_NATIVE_BUFFER_MAGIC ANDROID_NATIVE_MAKE_CONSTANT('_', 'b', 'f', 'r')

/** The first member of every native object. `incRef` and `decRef` are thread-safe; the last `decRef` destroys. */
struct android_native_base_t {
    int magic;
    int version;  // sizeof the whole struct
    void* reserved[4];
    void (*incRef)(android_native_base_t* base);
    void (*decRef)(android_native_base_t* base);
};

/** One buffer of a native window. The field order is an interface between binaries. */
struct ANativeWindowBuffer {
    ANativeWindowBuffer() {
        common.magic = ANDROID_NATIVE_BUFFER_MAGIC;
        common.version = sizeof(ANativeWindowBuffer);
    }
    // Smart pointers pass themselves; native objects keep no record of that.
    void incStrong(const void*) const { common.incRef(const_cast<android_native_base_t*>(&common)); }
    void decStrong(const void*) const { common.decRef(const_cast<android_native_base_t*>(&common)); }

    android_native_base_t common = {};
    int width = 0;   // pixels
    int height = 0;  // pixels
    int stride = 0;  // pixels from one row to the next
    int format = 0;  // HAL_PIXEL_FORMAT_* or a vendor's number
    int usage_deprecated = 0;
    uintptr_t layerCount = 0;
    void* reserved[1] = {};
    const native_handle_t* handle = nullptr;
    uint64_t usage = 0;  // GRALLOC_USAGE_*
    void* reserved_proc[8 - (sizeof(uint64_t) / sizeof(void*))] = {};
};

typedef ANativeWindowBuffer ANativeWindowBuffer_t;
typedef ANativeWindowBuffer_t android_native_buffer_t;
