#include <media/MediaCodecBuffer.h>

#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

MediaCodecBuffer::MediaCodecBuffer(const sp<AMessage>& format, const sp<ABuffer>& buffer)
        : mFormat(format), mBuffer(buffer), mSize(buffer->capacity()) {}

uint8_t* MediaCodecBuffer::base() { return mBuffer->base(); }
uint8_t* MediaCodecBuffer::data() { return mBuffer->base() + mOffset; }
size_t MediaCodecBuffer::capacity() const { return mBuffer->capacity(); }
size_t MediaCodecBuffer::size() const { return mSize; }
size_t MediaCodecBuffer::offset() const { return mOffset; }

status_t MediaCodecBuffer::setRange(size_t offset, size_t size) {
    if (offset > capacity() || size > capacity() - offset) return BAD_VALUE;
    mOffset = offset;
    mSize = size;
    return OK;
}

sp<AMessage> MediaCodecBuffer::format() { return mFormat; }

}  // namespace android
