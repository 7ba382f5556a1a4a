#include "CallLog.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace quill::host {

namespace {

struct State {
    std::atomic<bool> on{false};
    std::mutex lock;
    std::vector<std::pair<std::string, std::string>> calls;
};

State& state() {
    static State* const kept = new State;  // never destroyed: threads may note calls at exit
    return *kept;
}

}  // namespace

CallLog& CallLog::instance() {
    static CallLog log;
    return log;
}

void CallLog::start() {
    const std::lock_guard<std::mutex> guard(state().lock);
    state().calls.clear();
    state().on = true;
}

void CallLog::note(const char* call, const std::string& arguments) {
    if (!state().on) return;
    const std::lock_guard<std::mutex> guard(state().lock);
    state().calls.emplace_back(call, arguments);
}

void CallLog::note(const char* call, std::initializer_list<int64_t> arguments) {
    if (!state().on) return;
    std::string text;
    for (const int64_t argument : arguments) text += (text.empty() ? "" : " ") + std::to_string(argument);
    note(call, text);
}

std::vector<std::string> CallLog::of(const std::string& call) const {
    const std::lock_guard<std::mutex> guard(state().lock);
    std::vector<std::string> found;
    for (const auto& [name, arguments] : state().calls) {
        if (name == call) found.push_back(arguments);
    }
    return found;
}

}  // namespace quill::host
