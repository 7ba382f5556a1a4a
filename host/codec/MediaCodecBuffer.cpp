#include <media/MediaCodecBuffer.h>

#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

MediaCodecBuffer::MediaCodecBuffer(const sp<AMessage>& format, const sp<ABuffer>& buffer)
        : mFormat(format), mBuffer(buffer) {}

uint8_t* MediaCodecBuffer::base() { return mBuffer->base(); }
uint8_t* MediaCodecBuffer::data() { return mBuffer->data(); }
size_t MediaCodecBuffer::capacity() const { return mBuffer->capacity(); }
size_t MediaCodecBuffer::size() const { return mBuffer->size(); }
size_t MediaCodecBuffer::offset() const { return mBuffer->offset(); }

status_t MediaCodecBuffer::setRange(size_t offset, size_t size) { return mBuffer->setRangeWithStatus(offset, size); }

sp<AMessage> MediaCodecBuffer::meta() { return mBuffer->meta(); }
sp<AMessage> MediaCodecBuffer::format() { return mFormat; }
void MediaCodecBuffer::setFormat(const sp<AMessage>& format) { mFormat = format; }

}  // namespace android
