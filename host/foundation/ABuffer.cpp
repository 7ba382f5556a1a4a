#define LOG_TAG "ABuffer"
#include <media/stagefright/foundation/ABuffer.h>

#include <log/log.h>
#include <media/stagefright/foundation/AMessage.h>
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
        : mData(allocate(capacity)), mCapacity(mData == nullptr ? 0 : capacity), mSize(mCapacity), mOwnsData(true) {}

ABuffer::ABuffer(void* data, size_t capacity)
        : mData(static_cast<uint8_t*>(data)), mCapacity(capacity), mSize(capacity), mOwnsData(false) {}

ABuffer::~ABuffer() {
    if (mOwnsData) free(mData);
}

void ABuffer::setRange(size_t offset, size_t size) {
    LOG_ALWAYS_FATAL_IF(setRangeWithStatus(offset, size) != OK, "range %zu+%zu lies outside the capacity %zu", offset,
                        size, mCapacity);
}

status_t ABuffer::setRangeWithStatus(size_t offset, size_t size) {
    if (offset > mCapacity || size > mCapacity - offset) return BAD_VALUE;
    mOffset = offset;
    mSize = size;
    return OK;
}

sp<ABuffer> ABuffer::CreateAsCopy(const void* data, size_t capacity) {
    sp<ABuffer> copy = new ABuffer(capacity);
    if (copy->capacity() != capacity) return nullptr;
    if (capacity > 0) memcpy(copy->data(), data, capacity);
    return copy;
}

sp<AMessage> ABuffer::meta() {
    if (mMeta == nullptr) mMeta = new AMessage;
    return mMeta;
}

}  // namespace android
