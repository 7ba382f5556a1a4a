#pragma once

#include <stdint.h>

namespace android {

/** How many bytes a frame takes in memory. */
struct FrameBytes {
    int64_t whole;  ///< all planes with their padding
    /**
     * What a caller has to hand over at least: a copy of a camera's plane views ends with the last chroma sample, so it
     * lacks the padding behind the last chroma row and, where chroma is interleaved, one sample more.
     */
    int64_t least;
};

/** Of a frame in layout `colorFormat` (an InputColorFormat); sizes in samples, as the writer's. */
FrameBytes frameBytes(int32_t width, int32_t stride, int32_t sliceHeight, int32_t colorFormat);

}  // namespace android
