#pragma once

#include <stdint.h>

#include <limits>
#include <type_traits>

/** For a class's private section: no copying. Nothing is returned by an assignment that nobody can make. */
#define DISALLOW_EVIL_CONSTRUCTORS(name) \
    name(const name&);                   \
    void operator=(const name&)

/** True when `size` elements of type T fit a 32-bit byte count; a negative size never does. */
template <typename T, typename S>
bool isSafeArraySize(S size) {
    if constexpr (std::is_signed_v<S>) {
        if (size < 0) return false;
    }
    return static_cast<std::make_unsigned_t<S>>(size) <= std::numeric_limits<uint32_t>::max() / sizeof(T);
}
