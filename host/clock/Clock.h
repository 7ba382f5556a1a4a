#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace quill::host {

/**
 * The one clock that every wait of the stand-in goes through, the process's `usleep` included.
 *
 * A test stretches or shrinks time with `setScale`: at 0.001 a wait of 10 s takes 10 ms, at 10 a poll
 * of 2 ms takes 20 ms. The environment's QUILL_CLOCK_STRETCH stretches every scale once more, for processes that
 * something slows down as a whole. All times given and returned are microseconds of this clock, not of the wall.
 * Thread-safe.
 */
class Clock {
  public:
    static Clock& instance();

    /** Wall microseconds per microsecond of this clock; 1 is real time. */
    void setScale(double wallPerMicrosecond);
    /** As set, stretched: what a wait by other means than this clock has to be multiplied by. */
    double scale() const;

    /** Monotonic; its zero is of no meaning. */
    int64_t nowUs() const;
    void sleepUs(int64_t microseconds) const;

    /**
     * Waits on `condition` until `ready()` or the time-out; a negative time-out waits for ever.
     * Returns what `ready()` said last. `lock` is held on entry and on return.
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
