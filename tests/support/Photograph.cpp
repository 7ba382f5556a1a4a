#include "support/Photograph.h"

#include <dirent.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "Clock.h"
#include "Faults.h"
#include "support/FileCalls.h"
#include "support/Waiting.h"

namespace quill::test {

namespace {

int entriesOf(const char* folder) {
    int count = 0;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder), closedir);
    while (readdir(entries.get()) != nullptr) ++count;
    return count;
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

/** A sanitizer starts a thread of its own beside the first in a process, and keeps it. */
Holdings Holdings::now() {
    static const bool started = [] {
        std::thread([] {}).join();
        return true;
    }();
    return started ? Holdings{entriesOf("/proc/self/task"), entriesOf("/proc/self/fd")} : Holdings{};
}

Holdings leakedSince(const Holdings& before, const Holdings& held) {
    Holdings leaked{};
    comesTrue([&] {
        const Holdings now = Holdings::now();
        leaked = {std::max(now.threads - before.threads - held.threads, 0),
                  std::max(now.descriptors - before.descriptors - held.descriptors, 0)};
        return leaked.threads == 0 && leaked.descriptors == 0;
    });
    return leaked;
}

}  // namespace quill::test
