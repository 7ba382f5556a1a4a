#include "support/Shot.h"

#include <dirent.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "Clock.h"
#include "Faults.h"
#include "support/FileCalls.h"
#include "support/HeifReader.h"

namespace quill::test {

namespace {

using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;

constexpr double kTimeless = 1e-7;
constexpr int kPollsInTenSeconds = 5000;
constexpr char kLooperDone[] = "D/QuillHeifWriter: kWhatProcessInputFrameNotify done";

int entriesOf(const char* folder) {
    int count = 0;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder), closedir);
    while (readdir(entries.get()) != nullptr) ++count;
    return count;
}

void readBack(const App& app, bool decode, ShotOutcome* outcome) {
    outcome->file = app.fileText();
    if (outcome->file.find(" still") != 0) return;
    const ReadStill read = readStill(app.output.path(), decode);
    if (!read.error.empty()) outcome->file += " (" + read.error + ")";
    if (decode) outcome->luma = psnr(app.frame().shown, read.planes).luma;
}

}  // namespace

long writeHurried(App& app, const LogCapture& log, const std::function<bool()>& blocked) {
    bool hurried = false;  // asked no more then: what is left are thousands of polls
    const FileCalls calls([&] {
        if (hurried || !(blocked() || log.has(kLooperDone))) return;
        hurried = true;
        Clock::instance().setScale(kTimeless);
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

std::string ShotOutcome::text() const {
    return std::to_string(result) + (polls >= kPollsInTenSeconds ? " after 10 s:" : ":") + file;
}

ShotOutcome shoot(const Scene& scene, const Taking& taking) {
    ShotOutcome outcome;
    App app(scene);
    const LogCapture log;
    const Holdings before = Holdings::now();
    const bool waits = taking.patience == Patience::kUntilDone;
    if (taking.patience == Patience::kStopFails) Faults::instance().inject("MediaCodec::stop", Fault::failing(-38));
    app.setUp();
    outcome.result = writeHurried(app, log, [&] { return !waits && taking.blocked(); });
    outcome.polls = Faults::instance().occurrences()["usleep"];
    const bool reuses = taking.reusesFile && outcome.result == -1;
    if (reuses) outcome.file = app.fileText();
    if (outcome.result == -1) app.scribble(reuses);

    Clock::instance().setScale(waits ? 1 : kImpatient);
    if (taking.patience == Patience::kAfterwards) {
        Faults::instance().release();
        log.waitFor(kLooperDone);
    }
    app.destroy();
    const bool forGood = taking.patience == Patience::kNone || taking.patience == Patience::kStopFails;
    if (!reuses && forGood) outcome.file = app.fileText();  // before what still blocks goes on
    if (taking.patience == Patience::kNone) outcome.leakedThreads = leakedSince(before, taking.held).threads;
    Faults::instance().release();
    const Holdings leaked = leakedSince(before);
    Clock::instance().setScale(1);
    outcome.leakedThreads += leaked.threads;
    outcome.leakedDescriptors = leaked.descriptors;
    if (outcome.file.empty()) readBack(app, taking.decode, &outcome);
    if (outcome.result == -1) outcome.touched = app.touched();
    outcome.log = log.lines();
    outcome.released = app.holdsNothing() && app.java.callsAfterAnException == 0;
    return outcome;
}

}  // namespace quill::test
