#include "BufferContents.h"

namespace quill::host {

BufferContents BufferContents::of(const android::GraphicBuffer& buffer) { return {buffer.mMemory.get(), buffer.mSize}; }

}  // namespace quill::host
