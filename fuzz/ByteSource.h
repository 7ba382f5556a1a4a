#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

namespace quill::fuzz {

using Bytes = std::vector<uint8_t>;

/** Ends the process, which is what a fuzzer takes for a finding, unless `property` holds. */
inline void require(bool holds, const char* property) {
    if (holds) return;
    fprintf(stderr, "broken: %s\n", property);
    abort();
}

/** A fuzzer's input as numbers and bytes, from its front to its end. Once it is spent, every number is the lowest. */
class ByteSource {
  public:
    ByteSource(const uint8_t* data, size_t size) : mNext(data), mLeft(size) {}

    bool isSpent() const { return mLeft == 0; }

    /** From `low` to `high`, both included, out of as few bytes as that takes. */
    template <typename T>
    T number(T low, T high) {
        static_assert(std::is_integral_v<T>, "whole numbers only");
        const uint64_t range = static_cast<uint64_t>(high) - static_cast<uint64_t>(low);
        uint64_t value = 0;
        for (uint64_t rest = range; rest > 0; rest >>= 8) value = value << 8 | byte();
        if (range != UINT64_MAX) value %= range + 1;
        return static_cast<T>(static_cast<uint64_t>(low) + value);
    }

    bool flag() { return (byte() & 1) != 0; }

    template <typename T, size_t kCount>
    const T& oneOf(const T (&choices)[kCount]) {
        return choices[number<size_t>(0, kCount - 1)];
    }

    /** Up to `count` bytes; fewer at the end of the input. */
    Bytes bytes(size_t count) {
        const size_t taken = std::min(count, mLeft);
        const uint8_t* const begin = mNext;
        mNext += taken;
        mLeft -= taken;
        return Bytes(begin, begin + taken);
    }

    std::string text(size_t count) {
        const Bytes taken = bytes(count);
        return std::string(taken.begin(), taken.end());
    }

  private:
    uint8_t byte() {
        if (mLeft == 0) return 0;
        --mLeft;
        return *mNext++;
    }

    const uint8_t* mNext;
    size_t mLeft;
};

}  // namespace quill::fuzz
