// quill_bench [--quick] [Google Benchmark's options]: prints every row beside its budget, as a table in Markdown.
//
// Exit status: 0 when all rows hold, 1 when one does not or is broken, 2 for wrong usage. With --quick everything is
// small and measured once, and only broken rows count.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "Rows.h"

namespace {

using namespace quill::bench;

struct Tally {
    int held = 0;
    int missed = 0;
    int broken = 0;
};

/** Rows print themselves: nothing is left to do. */
class NoReport : public benchmark::BenchmarkReporter {
    bool ReportContext(const Context& /* context */) override { return true; }
    void ReportRuns(const std::vector<Run>& /* runs */) override {}
};

bool print(const Row& row, const Figures& figures) {
    const double ratio = figures.measured / figures.bound;
    const bool holds = ratio <= row.most;
    printf("| %-17s | %5.2f | %6.2f | %s | %8.4g | %8.4g | %-3s | %s | %s |\n", row.name.c_str(), ratio, row.most,
           holds ? "holds " : "MISSED", figures.measured / row.unit.one, figures.bound / row.unit.one, row.unit.name,
           row.what, row.against);
    return holds;
}

void run(const Row& row, benchmark::State& state, Tally* tally) {
    try {
        for (auto _ : state) {  // NOLINT(clang-analyzer-deadcode.DeadStores)
            const Figures figures = row.measure();
            state.counters["measured"] = figures.measured;
            state.counters["bound"] = figures.bound;
            ++(print(row, figures) ? tally->held : tally->missed);
        }
    } catch (const std::exception& exception) {
        state.SkipWithError(exception.what());
        printf("%s is broken: %s\n", row.name.c_str(), exception.what());
        ++tally->broken;
    }
    fflush(stdout);
}

/** Says how it went; the exit status. */
int conclude(const Tally& tally) {
    const int measured = tally.held + tally.missed;
    printf("%d rows, %d over budget, %d broken%s\n", measured + tally.broken, tally.missed, tally.broken,
           quick ? " (quick: ratios mean nothing)" : "");
    const bool holds = quick || tally.missed == 0;
    return holds && measured > 0 && tally.broken == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QUILL_LOG", "silent", 0);
    benchmark::Initialize(&argc, argv);
    quick = argc == 2 && strcmp(argv[1], "--quick") == 0;
    if (argc > 1 && !quick) {
        fprintf(stderr, "quill_bench: no such option: %s\n", argv[argc - 1]);
        return 2;
    }
    const std::vector<Row> rows = makeRows();
    Tally tally;
    for (const Row& row : rows) {
        const auto runRow = [&](benchmark::State& state) { run(row, state, &tally); };
        benchmark::RegisterBenchmark(row.name.c_str(), runRow)->Iterations(1);
    }
    printf("| row               | ratio | budget |        | measured |    bound |     | what | against |\n"
           "|-------------------|------:|-------:|--------|---------:|---------:|-----|------|---------|\n");
    NoReport reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return conclude(tally);
}
