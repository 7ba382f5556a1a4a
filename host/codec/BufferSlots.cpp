#include "codec/BufferSlots.h"

#include <cerrno>

namespace quill::host {

void BufferSlots::reset(size_t count) { mSlots.assign(count, Slot()); }

std::optional<size_t> BufferSlots::firstFree() const {
    for (size_t i = 0; i < mSlots.size(); ++i) {
        if (mSlots[i].owner == Owner::kFree) return i;
    }
    return std::nullopt;
}

android::status_t BufferSlots::checkClientHolds(size_t index) const {
    if (index >= mSlots.size()) return -ERANGE;
    return mSlots[index].owner == Owner::kClient ? android::OK : -EACCES;
}

}  // namespace quill::host
