#include <cutils/properties.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <string>

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

/**
 * What the process has set comes first, then the environment variable QUILL_PROPERTIES, read at every call, then the
 * device's build.prop. An unset, an empty and an unreadable property are all the same to a client: empty.
 */
std::string valueOf(const char* key) {
    if (key == nullptr || Faults::instance().at("property_get")) return "";
    std::optional<std::string> value = findSet(key);
    if (!value) value = findInEnvironment(key);
    if (!value) value = findOnDevice(key);
    return value.value_or("");
}

}  // namespace

}  // namespace quill::host

int property_get(const char* key, char* value, const char* default_value) {
    std::string text = quill::host::valueOf(key);
    if (text.empty() && default_value != nullptr) text = default_value;
    const size_t length = std::min<size_t>(text.size(), PROPERTY_VALUE_MAX - 1);
    memcpy(value, text.data(), length);
    value[length] = '\0';
    return static_cast<int>(length);
}

int property_set(const char* key, const char* value) {
    const std::string text = value == nullptr ? "" : value;
    if (key == nullptr || *key == '\0' || text.size() >= PROPERTY_VALUE_MAX) return -EINVAL;
    const std::lock_guard<std::mutex> guard(quill::host::state().lock);
    quill::host::state().set[key] = text;
    return 0;
}
