#pragma once

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <string_view>

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
    ByteSource(const uint8_t* data, size_t size) : mLeft(reinterpret_cast<const char*>(data), size) {}

    bool isSpent() const { return mLeft.empty(); }
    /** Below 256. */
    int32_t byte() { return static_cast<uint8_t>(bytes(1).c_str()[0]); }
    /** Below 65536. */
    int32_t number() {
        const int32_t high = byte();
        return high << 8 | byte();
    }
    /** Up to `count` bytes; fewer at the end of the input. */
    std::string bytes(size_t count) {
        std::string taken(mLeft.substr(0, count));
        mLeft.remove_prefix(taken.size());
        return taken;
    }

  private:
    std::string_view mLeft;
};

}  // namespace quill::fuzz
