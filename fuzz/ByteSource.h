#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>

namespace quill::fuzz {

/** Ends the process, which is what a fuzzer takes for a finding, unless `property` holds. */
inline void require(bool holds, const char* property) {
    if (holds) return;
    fprintf(stderr, "broken: %s\n", property);
    abort();
}

/** A fuzzer's input as numbers and bytes, from its front to its end. Once it is spent, every number is 0. */
class ByteSource {
  public:
    ByteSource(const uint8_t* data, size_t size) : mNext(data), mLeft(size) {}

    bool isSpent() const { return mLeft == 0; }
    /** Below 256. */
    int32_t byte() { return mLeft == 0 ? 0 : (--mLeft, *mNext++); }
    /** Below 65536. */
    int32_t number() {
        const int32_t high = byte();
        return high << 8 | byte();
    }
    /** Up to `count` bytes; fewer at the end of the input. */
    std::string bytes(size_t count) {
        const size_t taken = std::min(count, mLeft);
        mNext += taken;
        mLeft -= taken;
        return {reinterpret_cast<const char*>(mNext) - taken, taken};
    }

  private:
    const uint8_t* mNext;
    size_t mLeft;
};

}  // namespace quill::fuzz
