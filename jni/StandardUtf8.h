#pragma once

#include <string>

namespace android {

/**
 * A VM's modified UTF-8 in the standard form (RFC 3629): a pair of three-byte surrogates becomes one four-byte
 * character, two bytes for U+0000 become one. A surrogate without its other half becomes U+FFFD.
 */
std::string standardUtf8(const std::string& modified);

}  // namespace android
