#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>

#include <utils/Errors.h>
#include <utils/RefBase.h>

class C2Buffer;

namespace android {

struct ABuffer;
struct AMessage;

/** One input or output buffer of a codec: memory, the range of it that is in use, and its format. */
class MediaCodecBuffer : public RefBase {
  public:
    /** Shares `buffer`; its current range is taken over. */
    MediaCodecBuffer(const sp<AMessage>& format, const sp<ABuffer>& buffer);
    ~MediaCodecBuffer() override = default;

    uint8_t* base();
    /** First byte in use; null for a buffer without memory. */
    uint8_t* data();
    /** Bytes of memory in all. */
    size_t capacity() const;
    /** Bytes in use. */
    size_t size() const;
    size_t offset() const;
    /** BAD_VALUE, and nothing changed, when the range does not lie inside the capacity. */
    virtual status_t setRange(size_t offset, size_t size);

    sp<AMessage> meta();
    sp<AMessage> format();
    void setFormat(const sp<AMessage>& format);

    /** The block-model face of a buffer; this one has none. */
    virtual std::shared_ptr<C2Buffer> asC2Buffer() { return nullptr; }
    virtual bool canCopy(const std::shared_ptr<C2Buffer>&) const { return false; }
    virtual bool copy(const std::shared_ptr<C2Buffer>&) { return false; }

  private:
    MediaCodecBuffer(const MediaCodecBuffer&) = delete;
    MediaCodecBuffer& operator=(const MediaCodecBuffer&) = delete;

    sp<AMessage> mFormat;
    sp<ABuffer> mBuffer;
};

}  // namespace android
