#include "StandardUtf8.h"

#include <stdint.h>

namespace android {

namespace {

/** The ten bits of the surrogate half at `at`; -1 for other bytes. `half` is its second byte without the low bits. */
int32_t surrogateBits(const std::string& text, size_t at, uint8_t half) {
    if (at + 3 > text.size() || text[at] != '\xED') return -1;
    const auto second = static_cast<uint8_t>(text[at + 1]), third = static_cast<uint8_t>(text[at + 2]);
    return (second & 0xF0) == half ? (second & 0x0F) << 6 | (third & 0x3F) : -1;
}

std::string fourBytes(int32_t code) {
    std::string bytes{static_cast<char>(0xF0 | code >> 18)};
    for (const int shift : {12, 6, 0}) bytes += static_cast<char>(0x80 | (code >> shift & 0x3F));
    return bytes;
}

}  // namespace

std::string standardUtf8(const std::string& modified) {
    constexpr uint8_t kHigh = 0xA0, kLow = 0xB0;
    std::string standard;
    for (size_t at = 0; at < modified.size();) {
        const int32_t high = surrogateBits(modified, at, kHigh), low = surrogateBits(modified, at + 3, kLow);
        if (high >= 0 && low >= 0) {
            standard += fourBytes(0x10000 + (high << 10 | low));
            at += 6;
        } else if (high >= 0 || surrogateBits(modified, at, kLow) >= 0) {
            standard += "\xEF\xBF\xBD";
            at += 3;
        } else if (modified.compare(at, 2, "\xC0\x80") == 0) {
            standard += '\0';
            at += 2;
        } else {
            standard += modified[at++];
        }
    }
    return standard;
}

}  // namespace android
