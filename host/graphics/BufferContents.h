#pragma once

#include <cstddef>
#include <cstdint>

#include <ui/GraphicBuffer.h>

namespace quill::host {

/**
 * A buffer's memory as hardware sees it: the way in for a consumer such as the codec, which neither locks for the CPU
 * nor meets the faults planned for a program's own locks. Valid while the buffer lives; what is in it is stable
 * between `BufferQueue::acquire` and `release`.
 */
struct BufferContents {
    const uint8_t* data;  ///< laid out as `layoutOf` says; null when `initCheck` fails
    size_t size;          ///< bytes

    static BufferContents of(const android::GraphicBuffer& buffer);
};

}  // namespace quill::host
