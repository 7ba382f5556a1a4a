#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct ANativeWindow;
typedef struct ANativeWindow ANativeWindow;

/**
 * Size and format of the buffers dequeued from now on. Width and height are both 0 (the window's own size) or both
 * positive; format 0 is the window's own. Returns 0 or a negative error.
 */
int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height, int32_t format);

#ifdef __cplusplus
}
#endif
