#pragma once

#include <cstddef>
#include <cstdint>

#include <ui/GraphicBuffer.h>

namespace quill::host {

/**
 * A buffer's memory as hardware sees it, for a consumer such as the codec. It needs no lock for the CPU, and faults
 * planned for a program's locks do not apply. Valid while the buffer lives; the contents do not change between
 * `BufferQueue::acquire` and `release`.
 */
struct BufferContents {
    const uint8_t* data;  ///< laid out by `layoutOf`; null if `initCheck` fails
    size_t size;          ///< bytes

    static BufferContents of(const android::GraphicBuffer& buffer);
};

}  // namespace quill::host
