#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <media/MediaCodecBuffer.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace quill::host {

/** The numbered buffers of one port of a codec and their owners. Not thread-safe. */
class BufferSlots {
  public:
    enum class Owner { kFree, kClient, kCodec };

    /** Makes `count` free slots without memory. */
    void reset(size_t count);

    /** A free slot. They come in no order that a client could rely on. */
    std::optional<size_t> anyFree() const;
    /** OK if the client holds `index`; -ERANGE if there is no such slot, else -EACCES. */
    android::status_t checkClientHolds(size_t index) const;
    bool clientHolds(size_t index) const { return checkClientHolds(index) == android::OK; }

    void give(size_t index, Owner owner) {
        mSlots[index].owner = owner;
        ++mHandOvers;
    }
    void setBuffer(size_t index, const android::sp<android::MediaCodecBuffer>& buffer) {
        mSlots[index].buffer = buffer;
    }
    const android::sp<android::MediaCodecBuffer>& buffer(size_t index) const { return mSlots[index].buffer; }

  private:
    struct Slot {
        Owner owner = Owner::kFree;
        android::sp<android::MediaCodecBuffer> buffer;
    };
    std::vector<Slot> mSlots;
    size_t mHandOvers = 0;
};

}  // namespace quill::host
