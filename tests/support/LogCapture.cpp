#include "support/LogCapture.h"

#include <algorithm>
#include <mutex>

#include <android/log.h>

#include "support/Waiting.h"

namespace quill::test {

namespace {

std::mutex gLock;
// Outlives every thread that may still log at exit.
std::vector<std::string>& gLines = *new std::vector<std::string>;

void capture(const __android_logger_data* line, const char* message) {
    constexpr char kLetters[] = "??VDIWEF";  // by android_LogPriority
    const std::lock_guard<std::mutex> guard(gLock);
    gLines.push_back(std::string{kLetters[line->priority], '/'} + line->tag + ": " + message);
}

}  // namespace

LogCapture::LogCapture() {
    clear();
    __android_log_set_logger(capture);
}

LogCapture::~LogCapture() {
    __android_log_set_logger([](const __android_logger_data*, const char*) {});
}

std::vector<std::string> LogCapture::lines() const {
    const std::lock_guard<std::mutex> guard(gLock);
    return gLines;
}

std::vector<std::string> LogCapture::of(const std::string& tag) const {
    std::vector<std::string> found;
    const std::string behindLevel = tag + ": ";
    for (const std::string& line : lines()) {
        if (line.compare(2, behindLevel.size(), behindLevel) != 0) continue;
        found.push_back(line.substr(0, 2) + line.substr(2 + behindLevel.size()));
    }
    return found;
}

int LogCapture::count(const std::string& line) const {
    const std::lock_guard<std::mutex> guard(gLock);
    return static_cast<int>(std::count(gLines.begin(), gLines.end(), line));
}

bool LogCapture::waitFor(const std::string& line) const {
    return comesTrue([&] { return has(line); });
}

void LogCapture::clear() {
    const std::lock_guard<std::mutex> guard(gLock);
    gLines.clear();
}

}  // namespace quill::test
