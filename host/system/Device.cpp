#define LOG_TAG "QuillPlatform"
#include "Device.h"

#include <dlfcn.h>
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

/** Beside this library when it is installed, else in the sources that it was built of. */
std::string devicesFolder() {
    Dl_info library{};
    std::error_code missing;
    if (dladdr(&kDefaultDevice, &library) != 0) {
        const fs::path folder = fs::path(library.dli_fname).parent_path() / QUILL_DEVICES_FROM_LIBRARY;
        if (fs::is_directory(folder, missing)) return folder.lexically_normal();
    }
    return QUILL_DEVICES_DIR;
}

std::string knownDevices() {
    std::error_code unreadable;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(devicesFolder(), unreadable)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

void reportUnknown(const std::string& folder) {
    static std::mutex lock;
    static std::set<std::string>* const reported = new std::set<std::string>;  // for threads that outlive main
    const std::lock_guard<std::mutex> guard(lock);
    if (!reported->insert(folder).second) return;
    ALOGE("QUILL_DEVICE: There is no device folder %s; give a folder (with a slash) or one of: %s", folder.c_str(),
          knownDevices().c_str());
}

}  // namespace

std::string deviceFolder() {
    const char* const given = getenv("QUILL_DEVICE");
    const std::string device = given == nullptr || *given == '\0' ? kDefaultDevice : given;
    const bool isFolder = device.find('/') != std::string::npos;
    std::string folder = isFolder ? device : devicesFolder() + "/" + device;
    std::error_code unreadable;
    if (!fs::is_directory(folder, unreadable)) reportUnknown(folder);
    return folder;
}

}  // namespace quill::host
