#include <media/stagefright/foundation/AString.h>

#include <string.h>

namespace android {

AString::AString(const char* s) : mText(s) {}
AString::AString(const char* s, size_t size) : mText(s, size) {}

bool AString::startsWith(const char* prefix) const { return strncmp(c_str(), prefix, strlen(prefix)) == 0; }

}  // namespace android
