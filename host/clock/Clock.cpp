#include "Clock.h"

#include <cstdlib>
#include <thread>

#include <unistd.h>

namespace quill::host {

namespace {

using Wall = std::chrono::steady_clock;

double stretch() {
    static const char* const text = getenv("QUILL_CLOCK_STRETCH");
    static const double asked = text == nullptr ? 0.0 : strtod(text, nullptr);
    return asked > 0.0 ? asked : 1.0;
}

/** At `origin` this clock stood at `originUs`; since then it runs at 1 / `wallPerUs`, which includes the stretch. */
struct Pace {
    std::mutex lock;
    Wall::time_point origin = Wall::now();
    double originUs = 0.0;
    double wallPerUs = stretch();

    double nowUs() const {
        return originUs + std::chrono::duration<double, std::micro>(Wall::now() - origin).count() / wallPerUs;
    }
};

Pace& pace() {
    static Pace* const kept = new Pace;  // never destroyed: threads may wait at exit
    return *kept;
}

}  // namespace

Clock& Clock::instance() {
    static Clock clock;
    return clock;
}

void Clock::setScale(double wallPerMicrosecond) {
    const std::lock_guard<std::mutex> guard(pace().lock);
    pace().originUs = pace().nowUs();  // no jump in time
    pace().origin = Wall::now();
    pace().wallPerUs = wallPerMicrosecond * stretch();
}

double Clock::scale() const {
    const std::lock_guard<std::mutex> guard(pace().lock);
    return pace().wallPerUs;
}

int64_t Clock::nowUs() const {
    const std::lock_guard<std::mutex> guard(pace().lock);
    return static_cast<int64_t>(pace().nowUs());
}

// Below a microsecond it only yields, because the system's timers are coarser.
void Clock::sleepUs(int64_t microseconds) const {
    const std::chrono::nanoseconds wall = toWall(microseconds);
    if (wall < std::chrono::microseconds(1)) return std::this_thread::yield();
    std::this_thread::sleep_for(wall);
}

std::chrono::nanoseconds Clock::toWall(int64_t microseconds) const {
    return std::chrono::nanoseconds(static_cast<int64_t>(static_cast<double>(microseconds) * 1000.0 * scale()));
}

}  // namespace quill::host

// The library polls with usleep. This one, which it finds by its version (clock.map), puts those polls on the same
// clock as the codec's waits.
extern "C" int usleep(useconds_t microseconds) {
    quill::host::Clock::instance().sleepUs(microseconds);
    return 0;
}
