#include <cutils/properties.h>
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
    static std::mutex lock;
    static auto* const devices =
            new std::map<std::string, PropertyMap>;  // by folder; for threads that outlive main too
    const std::string folder = deviceFolder();
    const std::lock_guard<std::mutex> guard(lock);
    auto device = devices->find(folder);
    if (device == devices->end()) device = devices->emplace(folder, readBuildProp(folder)).first;
    const auto found = device->second.find(key);
    if (found == device->second.end()) return std::nullopt;
    return found->second;
}

/**
 * The environment variable QUILL_PROPERTIES, read at every call, overrides the device's build.prop. An unset, an empty
 * and an unreadable property are all the same to a client: empty.
 */
std::string valueOf(const char* key) {
    if (key == nullptr || Faults::instance().at("property_get")) return "";
    std::optional<std::string> value = findInEnvironment(key);
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
