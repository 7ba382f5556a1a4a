#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <media/MediaCodecBuffer.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace quill::host {

/** The numbered buffers of one port of a codec, and who holds each. Not thread-safe. */
class BufferSlots {
  public:
    enum class Owner { kFree, kClient, kCodec };

    /** All free and without memory. */
    void reset(size_t count);
    size_t size() const { return mSlots.size(); }

    /** A free slot: in what order they come says nothing, as with a device's codec. */
    std::optional<size_t> anyFree() const;
    /** OK when the client holds `index`; -ERANGE when there is no such slot, else -EACCES. */
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
