#define LOG_TAG "AString"
#include <media/stagefright/foundation/AString.h>

#include <ctype.h>
#include <log/log.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>
#include <utils/String8.h>

#include <algorithm>

namespace android {

namespace {

bool isSpace(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }

void checkPosition(size_t position, size_t size) {
    LOG_ALWAYS_FATAL_IF(position > size, "position %zu lies behind the end, %zu", position, size);
}

void checkRange(size_t offset, size_t n, size_t size) {
    LOG_ALWAYS_FATAL_IF(offset > size || n > size - offset, "range %zu+%zu lies outside the size %zu", offset, n, size);
}

}  // namespace

AString::AString(const char* s) : mText(s) {}
AString::AString(const char* s, size_t size) : mText(s, size) {}
AString::AString(const String8& from) : mText(from.string(), from.length()) {}
AString::AString(const AString& from, size_t offset, size_t n) { setTo(from, offset, n); }

void AString::setTo(const char* s) { mText = s; }
void AString::setTo(const char* s, size_t size) { mText.assign(s, size); }

void AString::setTo(const AString& from, size_t offset, size_t n) {
    checkRange(offset, n, from.size());
    mText.assign(std::string(from.mText, offset, n));
}

void AString::trim() {
    const auto first = std::find_if_not(mText.begin(), mText.end(), isSpace);
    const auto last = std::find_if_not(mText.rbegin(), std::make_reverse_iterator(first), isSpace).base();
    mText = std::string(first, last);
}

void AString::tolower() {
    for (char& c : mText) c = static_cast<char>(::tolower(static_cast<unsigned char>(c)));
}

void AString::erase(size_t start, size_t n) {
    checkRange(start, n, size());
    mText.erase(start, n);
}

void AString::insert(const AString& from, size_t insertionPos) {
    checkPosition(insertionPos, size());
    mText.insert(insertionPos, from.mText);
}

void AString::insert(const char* from, size_t size, size_t insertionPos) {
    checkPosition(insertionPos, mText.size());
    mText.insert(insertionPos, from, size);
}

void AString::append(const AString& from, size_t offset, size_t n) {
    checkRange(offset, n, from.size());
    mText.append(from.mText, offset, n);
}

void AString::append(int x) { mText += std::to_string(x); }
void AString::append(unsigned x) { mText += std::to_string(x); }
void AString::append(long x) { mText += std::to_string(x); }
void AString::append(unsigned long x) { mText += std::to_string(x); }
void AString::append(long long x) { mText += std::to_string(x); }
void AString::append(unsigned long long x) { mText += std::to_string(x); }
void AString::append(float x) { mText += std::to_string(x); }
void AString::append(double x) { mText += std::to_string(x); }
void AString::append(void* x) { append(AStringPrintf("%p", x)); }

ssize_t AString::find(const char* substring, size_t start) const {
    checkPosition(start, size());
    const size_t position = mText.find(substring, start);
    return position == std::string::npos ? -1 : static_cast<ssize_t>(position);
}

size_t AString::hash() const { return std::hash<std::string>()(mText); }

int AString::compare(const AString& other) const { return mText.compare(other.mText); }
int AString::compareIgnoreCase(const AString& other) const { return strcasecmp(c_str(), other.c_str()); }
bool AString::equalsIgnoreCase(const AString& other) const { return compareIgnoreCase(other) == 0; }

bool AString::startsWith(const char* prefix) const { return strncmp(c_str(), prefix, strlen(prefix)) == 0; }

bool AString::endsWith(const char* suffix) const {
    const size_t length = strlen(suffix);
    return length <= size() && strcmp(c_str() + size() - length, suffix) == 0;
}

bool AString::startsWithIgnoreCase(const char* prefix) const {
    return strncasecmp(c_str(), prefix, strlen(prefix)) == 0;
}

bool AString::endsWithIgnoreCase(const char* suffix) const {
    const size_t length = strlen(suffix);
    return length <= size() && strcasecmp(c_str() + size() - length, suffix) == 0;
}

AString AStringPrintf(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    char* text = nullptr;
    const int length = vasprintf(&text, format, arguments);
    va_end(arguments);
    if (length < 0) return AString();
    const AString result(text, static_cast<size_t>(length));
    free(text);
    return result;
}

}  // namespace android
