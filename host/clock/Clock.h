#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace quill::host {

/**
 * The one clock of the stand-in. All its waits go through it, and so does the process's `usleep`.
 *
 * A test stretches or shrinks time with `setScale`: at 0.001 a wait of 10 s takes 10 ms, at 10 a poll of 2 ms takes
 * 20 ms. QUILL_CLOCK_STRETCH in the environment multiplies every scale, for processes that run slower as a whole. All
 * times are microseconds of this clock, not of real time. Thread-safe.
 */
class Clock {
  public:
    static Clock& instance();

    /** Real microseconds per microsecond of this clock; 1 is real time. */
    void setScale(double wallPerMicrosecond);
    /** The scale, stretched: the factor for a wait that does not go through this clock. */
    double scale() const;

    /** Monotonic, from an arbitrary zero. */
    int64_t nowUs() const;
    void sleepUs(int64_t microseconds) const;

    /**
     * Waits on `condition` until `ready()` or the time-out; a negative time-out waits without limit. Returns the last
     * result of `ready()`. `lock` is held on entry and on return.
     */
    template <typename Ready>
    bool waitFor(std::condition_variable& condition, std::unique_lock<std::mutex>& lock, int64_t timeoutUs,
                 Ready ready) const {
        if (timeoutUs < 0) {
            condition.wait(lock, ready);
            return true;
        }
        return condition.wait_for(lock, toWall(timeoutUs), ready);
    }

  private:
    Clock() = default;
    std::chrono::nanoseconds toWall(int64_t microseconds) const;
};

}  // namespace quill::host
