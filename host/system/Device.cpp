#define LOG_TAG "QuillPlatform"
#include "Device.h"

#include <log/log.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <set>
#include <vector>

namespace quill::host {

namespace fs = std::filesystem;

namespace {

const char kDefaultDevice[] = "workstation";

std::string knownDevices() {
    std::error_code unreadable;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(QUILL_DEVICES_DIR, unreadable)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

void reportUnknown(const std::string& folder) {
    static std::mutex lock;
    static std::set<std::string>* const reported = new std::set<std::string>;  // asked by threads that outlive main
    const std::lock_guard<std::mutex> guard(lock);
    if (!reported->insert(folder).second) return;
    ALOGE("QUILL_DEVICE: there is no device folder %s; give a folder (with a slash) or one of: %s", folder.c_str(),
          knownDevices().c_str());
}

}  // namespace

std::string deviceFolder() {
    const char* const given = getenv("QUILL_DEVICE");
    const std::string device = given == nullptr || *given == '\0' ? kDefaultDevice : given;
    const bool isFolder = device.find('/') != std::string::npos;
    std::string folder = isFolder ? device : std::string(QUILL_DEVICES_DIR) + "/" + device;
    std::error_code unreadable;
    if (!fs::is_directory(folder, unreadable)) reportUnknown(folder);
    return folder;
}

}  // namespace quill::host
