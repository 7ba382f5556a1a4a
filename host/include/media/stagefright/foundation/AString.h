#pragma once

#include <stddef.h>

#include <string>

namespace android {

/** A byte string that owns its text. */
struct AString {
    AString() = default;
    AString(const char* s);  // NOLINT(google-explicit-constructor): clients pass plain text
    AString(const char* s, size_t size);

    /** Bytes. */
    size_t size() const { return mText.size(); }
    /** NUL-terminated; valid until this string changes. */
    const char* c_str() const { return mText.c_str(); }
    bool empty() const { return mText.empty(); }

    bool operator==(const AString& other) const { return mText == other.mText; }
    bool operator!=(const AString& other) const { return mText != other.mText; }
    bool startsWith(const char* prefix) const;

  private:
    std::string mText;
};

}  // namespace android
