#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>

namespace quill::bench {

using Work = std::function<void()>;

/** Both sides of a row, in seconds or bytes. */
struct Figures {
    double measured;
    double bound;
};

/** Everything small, and one run of each side: enough to see that it works. Set before the first measurement. */
inline bool quick = false;

/**
 * Seconds of both sides. They run by turns, so that a busy moment of the machine falls on both, and the fastest run of
 * each counts: what else the machine does only makes a run slower. At least seven runs, more while they take less than
 * a second in all, and before them one that is not timed.
 */
Figures fastest(const Work& measured, const Work& bound);

/**
 * Bytes that the peak of resident memory during `work` lies above what is resident before. `warmUp` loads the code that
 * `work` runs through. Only `inOwnProcess`.
 */
double peakBytes(const Work& warmUp, const Work& work);

/** Runs a command, its output discarded. Throws when it fails. */
void runShell(const std::string& command);

/**
 * Runs `work` in a copy of this process, which has one thread. Returns the peak of resident memory of the copy or of
 * the largest command that it ran, in bytes. Throws when `work` fails; the reason is on stderr.
 */
double runForked(const Work& work);
/** Memory that such copies have in common with this process; never given back. */
void* sharedMemory(size_t bytes);

/** The result of `work`, which may choose a device and fill the memory: nothing of it stays in this process. */
template <typename Work, typename Result = std::invoke_result_t<Work>>
Result inOwnProcess(const Work& work) {
    static_assert(std::is_trivially_copyable_v<Result>);
    static Result* const result = static_cast<Result*>(sharedMemory(sizeof(Result)));
    runForked([&] { *result = work(); });
    return *result;
}

}  // namespace quill::bench
