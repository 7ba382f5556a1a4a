#include "support/Photograph.h"

#include <dirent.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "Clock.h"
#include "Faults.h"
#include "support/FileCalls.h"

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

long writeHurried(App& app, const LogCapture& log, const std::function<bool()>& blocked) {
    bool hurried = false;  // asked no more then: what is left are thousands of polls
    const FileCalls calls([&] {
        if (hurried || !(blocked() || log.has(kLooperDone))) return;
        hurried = true;
        quill::host::Clock::instance().setScale(kTimeless);
    });
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
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);  // longer than any machine needs
    Holdings leaked{};
    do {
        sched_yield();
        const Holdings now = Holdings::now();
        leaked = {std::max(now.threads - before.threads - held.threads, 0),
                  std::max(now.descriptors - before.descriptors - held.descriptors, 0)};
    } while ((leaked.threads != 0 || leaked.descriptors != 0) && std::chrono::steady_clock::now() < deadline);
    return leaked;
}

}  // namespace quill::test
