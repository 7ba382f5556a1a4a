#include "Rows.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace quill::bench {

namespace {

void publish(benchmark::State& state, const Figures& figures) {
    state.counters["measured"] = figures.measured;
    state.counters["bound"] = figures.bound;
    state.counters["ratio"] = figures.ratio;
    state.SetLabel(figures.remark);
}

void runPairs(benchmark::State& state, const std::function<Sides()>& prepare) {
    PairedTimes times(prepare());
    for (auto _ : state) state.SetIterationTime(times.timePair());
    publish(state, times.figures());
}

void runOnce(benchmark::State& state, const std::function<Figures()>& measure) {
    Figures figures{};
    for (auto _ : state) {
        figures = measure();
        state.SetIterationTime(figures.measured);
    }
    publish(state, figures);
}

/** `run` with its exceptions turned into the row's error. */
template <typename Run>
auto guarded(Run run) {
    return [run](benchmark::State& state) {
        try {
            run(state);
        } catch (const std::exception& exception) {
            state.SkipWithError(exception.what());
        }
    };
}

}  // namespace

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

PairedTimes::PairedTimes(Sides sides) : mSides(std::move(sides)) {
    // Untimed: memory is touched and code is loaded.
    mSides.measured();
    mSides.bound();
}

double PairedTimes::timePair() {
    const bool boundFirst = mRatios.size() % 2 != 0;
    double bound = boundFirst ? secondsOf(mSides.bound) : 0;
    const double measured = secondsOf(mSides.measured);
    if (!boundFirst) bound = secondsOf(mSides.bound);
    mMeasured.push_back(measured);
    mBound.push_back(bound);
    mRatios.push_back(measured / bound);
    return measured;
}

Figures PairedTimes::figures() const { return {median(mMeasured), median(mBound), median(mRatios), ""}; }

double PairedTimes::fastest() const { return *std::min_element(mMeasured.begin(), mMeasured.end()); }

void addPairedRow(const char* row, int pairs, std::function<Sides()> prepare) {
    benchmark::RegisterBenchmark(
            row, guarded([prepare = std::move(prepare)](benchmark::State& state) { runPairs(state, prepare); }))
            ->Iterations(pairs)
            ->UseManualTime();
}

void addRow(const char* row, std::function<Figures()> measure) {
    benchmark::RegisterBenchmark(
            row, guarded([measure = std::move(measure)](benchmark::State& state) { runOnce(state, measure); }))
            ->Iterations(1)
            ->UseManualTime();
}

}  // namespace quill::bench
