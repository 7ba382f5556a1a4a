#pragma once

#include <stddef.h>
#include <sys/types.h>

#include <string>

namespace android {

class String8;

/** A byte string that owns its text. Positions and sizes are bytes; a position past the end aborts. */
struct AString {
    AString() = default;
    AString(const char* s);  // NOLINT(google-explicit-constructor): clients pass plain text
    AString(const char* s, size_t size);
    AString(const String8& from);  // NOLINT(google-explicit-constructor)
    AString(const AString& from) = default;
    AString(const AString& from, size_t offset, size_t n);
    ~AString() = default;

    AString& operator=(const AString& from) = default;
    void setTo(const char* s);
    void setTo(const char* s, size_t size);
    void setTo(const AString& from, size_t offset, size_t n);

    size_t size() const { return mText.size(); }
    /** NUL-terminated; valid until the next change of this string. */
    const char* c_str() const { return mText.c_str(); }
    bool empty() const { return mText.empty(); }

    void clear() { mText.clear(); }
    /** Drops white space at both ends. */
    void trim();
    void tolower();
    void erase(size_t start, size_t n);
    void insert(const AString& from, size_t insertionPos);
    void insert(const char* from, size_t size, size_t insertionPos);

    void append(char c) { mText.push_back(c); }
    void append(const char* s) { mText.append(s); }
    void append(const char* s, size_t size) { mText.append(s, size); }
    void append(const AString& from) { mText.append(from.mText); }
    void append(const AString& from, size_t offset, size_t n);
    /** Numbers in decimal, floating-point ones with six decimals, a pointer in hexadecimal. */
    void append(int x);
    void append(unsigned x);
    void append(long x);
    void append(unsigned long x);
    void append(long long x);
    void append(unsigned long long x);
    void append(float x);
    void append(double x);
    void append(void* x);

    /** Position of `substring` at or behind `start`, or -1. */
    ssize_t find(const char* substring, size_t start = 0) const;
    size_t hash() const;

    bool operator==(const AString& other) const { return mText == other.mText; }
    bool operator!=(const AString& other) const { return mText != other.mText; }
    bool operator<(const AString& other) const { return mText < other.mText; }
    bool operator>(const AString& other) const { return mText > other.mText; }
    /** As strcmp and strcasecmp. */
    int compare(const AString& other) const;
    int compareIgnoreCase(const AString& other) const;
    bool equalsIgnoreCase(const AString& other) const;

    bool startsWith(const char* prefix) const;
    bool endsWith(const char* suffix) const;
    bool startsWithIgnoreCase(const char* prefix) const;
    bool endsWithIgnoreCase(const char* suffix) const;

  private:
    std::string mText;
};

/** printf into a string. */
AString AStringPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace android
