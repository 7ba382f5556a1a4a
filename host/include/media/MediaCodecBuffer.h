#pragma once

#include <stddef.h>
#include <stdint.h>

#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

struct ABuffer;
struct AMessage;

/** One input or output buffer of a codec: memory, the range of it that is in use, and its format. */
class MediaCodecBuffer : public RefBase {
  public:
    /** Shares `buffer`, all of it in use. */
    MediaCodecBuffer(const sp<AMessage>& format, const sp<ABuffer>& buffer);
    ~MediaCodecBuffer() override = default;

    uint8_t* base();
    /** First byte in use; null for a buffer without memory. */
    uint8_t* data();
    /** Bytes of memory. */
    size_t capacity() const;
    /** Bytes in use. */
    size_t size() const;
    size_t offset() const;
    /** BAD_VALUE, and nothing is changed, if the range is not inside the capacity. */
    virtual status_t setRange(size_t offset, size_t size);

    sp<AMessage> format();

  private:
    MediaCodecBuffer(const MediaCodecBuffer&) = delete;
    MediaCodecBuffer& operator=(const MediaCodecBuffer&) = delete;

    sp<AMessage> mFormat;
    sp<ABuffer> mBuffer;
    size_t mOffset = 0;
    size_t mSize;
};

}  // namespace android
