#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/stagefright/foundation/ABase.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

struct AMessage;

/** Memory with a range in use, which is all of it at first. Not thread-safe. */
struct ABuffer : public RefBase {
    /** Owns its memory, whose contents are undefined. When there is none left, capacity and size are 0. */
    explicit ABuffer(size_t capacity);
    /** Borrows the caller's memory, which has to outlive this. */
    ABuffer(void* data, size_t capacity);

    uint8_t* base() { return mData; }
    /** First byte in use. */
    uint8_t* data() { return mData + mOffset; }
    size_t capacity() const { return mCapacity; }
    /** Bytes in use. */
    size_t size() const { return mSize; }
    size_t offset() const { return mOffset; }

    /** Aborts when the range does not lie inside the capacity. */
    void setRange(size_t offset, size_t size);
    /** Instead returns BAD_VALUE and changes nothing. */
    status_t setRangeWithStatus(size_t offset, size_t size);

    /** Null when there is no memory left. */
    static sp<ABuffer> CreateAsCopy(const void* data, size_t capacity);

    /** A number of the client's own. */
    void setInt32Data(int32_t data) { mInt32Data = data; }
    int32_t int32Data() const { return mInt32Data; }

    /** What the client notes about the buffer; made at the first call. */
    sp<AMessage> meta();

  protected:
    ~ABuffer() override;

  private:
    uint8_t* mData = nullptr;
    size_t mCapacity = 0;
    size_t mOffset = 0;
    size_t mSize = 0;
    int32_t mInt32Data = 0;
    const bool mOwnsData;
    sp<AMessage> mMeta;

    DISALLOW_EVIL_CONSTRUCTORS(ABuffer);
};

}  // namespace android
