#pragma once

#include <android/native_window.h>
#include <nativebase/nativebase.h>

#ifdef __cplusplus
extern "C" {
#endif

/** As the window's hooks of these names: 0 or a negative error; -1 is no fence. */
int ANativeWindow_dequeueBuffer(ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd);
int ANativeWindow_queueBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd);
int ANativeWindow_cancelBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd);

/** GRALLOC_USAGE_* of the buffers dequeued from now on. */
int ANativeWindow_setUsage(ANativeWindow* window, uint64_t usage);

#ifdef __cplusplus
}
#endif
