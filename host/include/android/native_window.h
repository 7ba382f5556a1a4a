#pragma once

#include <stdint.h>

#include <android/rect.h>

#ifdef __cplusplus
extern "C" {
#endif

struct ANativeWindow;
typedef struct ANativeWindow ANativeWindow;

/** A window buffer that the CPU may write. */
typedef struct ANativeWindow_Buffer {
    int32_t width;   // pixels
    int32_t height;  // pixels
    int32_t stride;  // pixels from one row to the next
    int32_t format;
    void* bits;
    uint32_t reserved[6];
} ANativeWindow_Buffer;

void ANativeWindow_acquire(ANativeWindow* window);
void ANativeWindow_release(ANativeWindow* window);

/** Pixels, or a negative error. */
int32_t ANativeWindow_getWidth(ANativeWindow* window);
int32_t ANativeWindow_getHeight(ANativeWindow* window);
/** HAL_PIXEL_FORMAT_*, or a negative error. */
int32_t ANativeWindow_getFormat(ANativeWindow* window);

/**
 * Size and format of the buffers dequeued from now on; width and height are both 0 (the window's own size) or both
 * positive, format 0 is the window's own. 0, or a negative error.
 */
int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format);

/** Dequeues a buffer for the CPU; `inOutDirtyBounds`, if given, becomes the whole buffer: all of it must be drawn. */
int32_t ANativeWindow_lock(ANativeWindow* window, ANativeWindow_Buffer* outBuffer, ARect* inOutDirtyBounds);
/** Queues the buffer that `ANativeWindow_lock` handed out. */
int32_t ANativeWindow_unlockAndPost(ANativeWindow* window);

#ifdef __cplusplus
}
#endif
