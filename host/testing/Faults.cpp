#include "testing/Faults.h"

#include <condition_variable>
#include <mutex>
#include <vector>

#include "testing/Clock.h"

namespace quill::host {

namespace {

struct Planned {
    Fault fault;
    int first;
    int count;

    bool covers(int occurrence) const { return occurrence >= first && occurrence - first < count; }
};

struct State {
    std::mutex lock;
    std::condition_variable released;
    std::map<std::string, std::vector<Planned>> planned;
    std::map<std::string, int> occurrences;
    uint64_t releases = 0;
    bool holding = true;
};

State& state() {
    static State* const kept = new State;  // outlives every thread that may still ask at exit
    return *kept;
}

}  // namespace

Faults& Faults::instance() {
    static Faults faults;
    return faults;
}

void Faults::inject(const std::string& call, Fault fault, int first, int count) {
    const std::lock_guard<std::mutex> guard(state().lock);
    state().holding = true;
    state().planned[call].push_back({fault, first, count});
}

std::map<std::string, int> Faults::occurrences() const {
    const std::lock_guard<std::mutex> guard(state().lock);
    return state().occurrences;
}

void Faults::release() {
    const std::lock_guard<std::mutex> guard(state().lock);
    state().holding = false;
    ++state().releases;
    state().released.notify_all();
}

void Faults::reset() {
    release();
    const std::lock_guard<std::mutex> guard(state().lock);
    state().planned.clear();
    state().occurrences.clear();
}

std::optional<Fault> Faults::at(const char* call) {
    const std::optional<Fault> fault = count(call);
    if (!fault) return std::nullopt;
    switch (fault->kind) {
        case Fault::Kind::kLate:
            Clock::instance().sleepUs(fault->delayUs);
            return std::nullopt;
        case Fault::Kind::kStall:
            stall();
            return std::nullopt;
        default:
            return fault;
    }
}

std::optional<int32_t> Faults::statusAt(const char* call) {
    const std::optional<Fault> fault = at(call);
    if (!fault || fault->kind != Fault::Kind::kStatus) return std::nullopt;
    return fault->status;
}

std::optional<Fault> Faults::count(const char* call) {
    const std::lock_guard<std::mutex> guard(state().lock);
    const int occurrence = ++state().occurrences[call];
    const auto found = state().planned.find(call);
    if (found == state().planned.end()) return std::nullopt;
    for (const Planned& planned : found->second) {
        if (planned.covers(occurrence)) return planned.fault;
    }
    return std::nullopt;
}

void Faults::stall() {
    std::unique_lock<std::mutex> guard(state().lock);
    const uint64_t before = state().releases;
    state().released.wait(guard, [&] { return !state().holding || state().releases != before; });
}

}  // namespace quill::host
