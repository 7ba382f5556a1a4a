#include "Faults.h"

#include <condition_variable>
#include <mutex>
#include <vector>

#include "Clock.h"

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
    std::multimap<std::string, bool> stalled;  // by name; true: may go on
    bool holding = true;
};

State& state() {
    static State* const kept = new State;  // never destroyed: threads may ask at exit
    return *kept;
}

/** With the lock held. */
void releaseStalled(const std::string& prefix) {
    for (auto& [call, released] : state().stalled) {
        if (call.compare(0, prefix.size(), prefix) == 0) released = true;
    }
    state().released.notify_all();
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
    releaseStalled("");
}

void Faults::releaseNow(const std::string& prefix) {
    const std::lock_guard<std::mutex> guard(state().lock);
    releaseStalled(prefix);
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
            stall(call);
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

void Faults::stall(const std::string& call) {
    std::unique_lock<std::mutex> guard(state().lock);
    const auto self = state().stalled.emplace(call, !state().holding);
    state().released.wait(guard, [&] { return self->second; });
    state().stalled.erase(self);
}

}  // namespace quill::host
