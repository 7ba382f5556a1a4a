#include "support/LogCapture.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include <android/log.h>

namespace quill::test {

namespace {

constexpr std::chrono::seconds kLongestWait{60};
constexpr char kLetters[] = "??VDIWEF";  // by android_LogPriority

struct State {
    std::mutex lock;
    std::condition_variable logged;
    std::vector<std::string> lines;
};

State& state() {
    static State* const kept = new State;  // outlives every thread that may still log at exit
    return *kept;
}

std::string prefixOf(const __android_logger_data* line) {
    const bool known = line->priority >= 0 && line->priority < ANDROID_LOG_SILENT;
    return std::string(1, known ? kLetters[line->priority] : '?') + "/" + (line->tag == nullptr ? "" : line->tag);
}

void capture(const __android_logger_data* line, const char* message) {
    const std::lock_guard<std::mutex> guard(state().lock);
    state().lines.push_back(prefixOf(line) + ": " + message);
    state().logged.notify_all();
}

bool contains(const std::vector<std::string>& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
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
    const std::lock_guard<std::mutex> guard(state().lock);
    return state().lines;
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
    const std::vector<std::string> all = lines();
    return static_cast<int>(std::count(all.begin(), all.end(), line));
}

bool LogCapture::waitFor(const std::string& line) const {
    std::unique_lock<std::mutex> guard(state().lock);
    return state().logged.wait_for(guard, kLongestWait, [&] { return contains(state().lines, line); });
}

void LogCapture::clear() {
    const std::lock_guard<std::mutex> guard(state().lock);
    state().lines.clear();
}

}  // namespace quill::test
