#include "support/Photograph.h"

#include <filesystem>
#include <thread>

#include "Clock.h"
#include "Faults.h"
#include "support/FileCalls.h"
#include "support/Waiting.h"

namespace quill::test {

namespace {

int entriesOf(const char* folder) {
    using Entries = std::filesystem::directory_iterator;
    return static_cast<int>(std::distance(Entries(folder), Entries()));
}

}  // namespace

bool isMade(const std::string& call, int occurrence) {
    return quill::host::Faults::instance().occurrences()[call] >= occurrence;
}

std::function<void()> hurryOnce(std::function<bool()> condition) {
    return [condition, hurried = false]() mutable {
        if (hurried || !condition()) return;
        hurried = true;  // asked no more then: what is left are thousands of polls
        quill::host::Clock::instance().setScale(kTimeless);
    };
}

long writeHurried(App& app, const LogCapture& log, const std::function<bool()>& blocked) {
    const FileCalls calls(hurryOnce([&] { return blocked() || log.has(kLooperDone); }));
    return app.write();
}

Holdings Holdings::now() {
    // A sanitizer starts a thread of its own beside the first in a process, and keeps it.
    static const bool started = [] { return std::thread([] {}).join(), true; }();
    return {started ? entriesOf("/proc/self/task") : 0, entriesOf("/proc/self/fd")};
}

std::string leakedSince(const Holdings& before, const Holdings& held) {
    int threads = 0, descriptors = 0;
    const bool none = comesTrue([&] {
        const Holdings now = Holdings::now();
        threads = now.threads - before.threads - held.threads;
        descriptors = now.descriptors - before.descriptors - held.descriptors;
        return threads <= 0 && descriptors <= 0;
    });
    return none ? "" : " leaks threads: " + std::to_string(threads) + ", descriptors: " + std::to_string(descriptors);
}

}  // namespace quill::test
