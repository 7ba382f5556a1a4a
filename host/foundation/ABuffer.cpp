#include <media/stagefright/foundation/ABuffer.h>

#include <stdlib.h>
#include <string.h>

#include "Faults.h"

namespace android {

namespace {

uint8_t* allocate(size_t capacity) {
    if (quill::host::Faults::instance().at("ABuffer::ABuffer")) return nullptr;
    return static_cast<uint8_t*>(malloc(capacity));
}

}  // namespace

ABuffer::ABuffer(size_t capacity)
        : mData(allocate(capacity)), mCapacity(mData == nullptr ? 0 : capacity), mOwnsData(true) {}

ABuffer::ABuffer(void* data, size_t capacity)
        : mData(static_cast<uint8_t*>(data)), mCapacity(capacity), mOwnsData(false) {}

ABuffer::~ABuffer() {
    if (mOwnsData) free(mData);
}

sp<ABuffer> ABuffer::CreateAsCopy(const void* data, size_t capacity) {
    sp<ABuffer> copy = new ABuffer(capacity);
    if (copy->capacity() != capacity) return nullptr;
    if (capacity > 0) memcpy(copy->data(), data, capacity);
    return copy;
}

}  // namespace android
