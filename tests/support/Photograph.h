#pragma once

#include <functional>
#include <string>

#include "support/App.h"
#include "support/LogCapture.h"

namespace quill::test {

/** The clock's scale for a wait that ends in nothing. */
constexpr double kTimeless = 1e-7;
/** The writer's looper has nothing more to do. */
constexpr char kLooperDone[] = "D/QuillHeifWriter: kWhatProcessInputFrameNotify done";

/** Threads and descriptors of this process. */
struct Holdings {
    static Holdings now();
    int threads;
    int descriptors;
};
/** What there is more than `before` and `held` once what is ending has ended, empty for nothing. */
std::string leakedSince(const Holdings& before, const Holdings& held = {0, 0});

/** Whether a call was made this often since the faults were reset. */
bool isMade(const std::string& call, int occurrence = 1);

/** For `FileCalls`: once `condition` holds at a poll, polls and waits take no time any more. */
std::function<void()> hurryOnce(std::function<bool()> condition);
/** The app's call, hurried once the looper is done or `blocked` says that it is held. */
long writeHurried(App& app, const LogCapture& log, const std::function<bool()>& blocked);

}  // namespace quill::test
