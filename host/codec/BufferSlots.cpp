#include "BufferSlots.h"

#include <cerrno>

namespace quill::host {

void BufferSlots::reset(size_t count) { mSlots.assign(count, Slot()); }

std::optional<size_t> BufferSlots::anyFree() const {
    for (size_t i = 0; i < mSlots.size(); ++i) {
        const size_t candidate = (i + mHandOvers * mHandOvers) % mSlots.size();
        if (mSlots[candidate].owner == Owner::kFree) return candidate;
    }
    return std::nullopt;
}

android::status_t BufferSlots::checkClientHolds(size_t index) const {
    if (index >= mSlots.size()) return -ERANGE;
    return mSlots[index].owner == Owner::kClient ? android::OK : -EACCES;
}

}  // namespace quill::host
