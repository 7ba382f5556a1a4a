#include "Properties.h"

#include <cutils/properties.h>
#include <errno.h>
#include <inttypes.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <optional>

#include "BuildProp.h"
#include "Device.h"
#include "Faults.h"

namespace quill::host {

namespace {

using PropertyMap = std::map<std::string, std::string>;

struct State {
    std::mutex lock;
    PropertyMap set;
    std::map<std::string, PropertyMap> devices;  // by folder
};

State& state() {
    static State* const kept = new State;  // outlives every thread that may still ask at exit
    return *kept;
}

std::optional<std::string> find(const PropertyMap& properties, const std::string& key) {
    const auto found = properties.find(key);
    if (found == properties.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> findSet(const std::string& key) {
    const std::lock_guard<std::mutex> guard(state().lock);
    return find(state().set, key);
}

std::optional<std::string> findInEnvironment(const std::string& key) {
    const char* const overrides = getenv("QUILL_PROPERTIES");
    if (overrides == nullptr) return std::nullopt;
    return findOverride(overrides, key);
}

PropertyMap readBuildProp(const std::string& folder) {
    std::ifstream file(folder + "/build.prop");
    return parseBuildProp(std::string(std::istreambuf_iterator<char>(file), {}));
}

std::optional<std::string> findOnDevice(const std::string& key) {
    const std::string folder = deviceFolder();
    const std::lock_guard<std::mutex> guard(state().lock);
    auto device = state().devices.find(folder);
    if (device == state().devices.end()) device = state().devices.emplace(folder, readBuildProp(folder)).first;
    return find(device->second, key);
}

/** Unset, empty and unreadable are the same to a client. */
std::string clientValue(const char* key) {
    if (key == nullptr || Faults::instance().at("property_get")) return "";
    return propertyValue(key);
}

std::optional<int64_t> parseNumber(const std::string& text) {
    errno = 0;
    char* end = nullptr;
    const intmax_t number = strtoimax(text.c_str(), &end, 0);
    if (end == text.c_str() || errno == ERANGE) return std::nullopt;
    return number;
}

}  // namespace

std::string propertyValue(const std::string& key) {
    std::optional<std::string> value = findSet(key);
    if (!value) value = findInEnvironment(key);
    if (!value) value = findOnDevice(key);
    return value.value_or("").substr(0, PROPERTY_VALUE_MAX - 1);
}

}  // namespace quill::host

using quill::host::clientValue;
using quill::host::Faults;
using quill::host::state;

int property_get(const char* key, char* value, const char* default_value) {
    std::string text = clientValue(key);
    if (text.empty() && default_value != nullptr) text = default_value;
    const size_t length = std::min<size_t>(text.size(), PROPERTY_VALUE_MAX - 1);
    memcpy(value, text.data(), length);
    value[length] = '\0';
    return static_cast<int>(length);
}

int8_t property_get_bool(const char* key, int8_t default_value) {
    static const std::map<std::string, int8_t> kWords = {{"1", 1}, {"y", 1}, {"yes", 1}, {"true", 1},  {"on", 1},
                                                         {"0", 0}, {"n", 0}, {"no", 0},  {"false", 0}, {"off", 0}};
    const auto found = kWords.find(clientValue(key));
    return found == kWords.end() ? default_value : found->second;
}

int32_t property_get_int32(const char* key, int32_t default_value) {
    const int64_t number = property_get_int64(key, default_value);
    const bool fits = number >= std::numeric_limits<int32_t>::min() && number <= std::numeric_limits<int32_t>::max();
    return fits ? static_cast<int32_t>(number) : default_value;
}

int64_t property_get_int64(const char* key, int64_t default_value) {
    return quill::host::parseNumber(clientValue(key)).value_or(default_value);
}

int property_set(const char* key, const char* value) {
    if (const auto status = Faults::instance().statusAt("property_set")) return *status;
    const std::string text = value == nullptr ? "" : value;
    if (key == nullptr || *key == '\0' || text.size() >= PROPERTY_VALUE_MAX) return -EINVAL;
    const std::lock_guard<std::mutex> guard(state().lock);
    state().set[key] = text;
    return 0;
}
