#pragma once

#include <stddef.h>
#include <stdint.h>

#include <media/stagefright/foundation/ABase.h>
#include <utils/RefBase.h>

namespace android {

/** A block of memory, all of it in use. Not thread-safe. */
struct ABuffer : public RefBase {
    /** Owns its memory, whose contents are undefined. If the allocation fails, capacity and size are 0. */
    explicit ABuffer(size_t capacity);
    /** Borrows the caller's memory, which must outlive this. */
    ABuffer(void* data, size_t capacity);

    uint8_t* base() { return mData; }
    uint8_t* data() { return mData; }
    size_t capacity() const { return mCapacity; }
    size_t size() const { return mCapacity; }
    size_t offset() const { return 0; }

    /** Null if the allocation fails. */
    static sp<ABuffer> CreateAsCopy(const void* data, size_t capacity);

  protected:
    ~ABuffer() override;

  private:
    uint8_t* mData = nullptr;
    size_t mCapacity = 0;
    const bool mOwnsData;

    DISALLOW_EVIL_CONSTRUCTORS(ABuffer);
};

}  // namespace android
