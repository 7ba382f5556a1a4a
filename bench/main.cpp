// quill_bench [--quick] [--report DIR] [Google Benchmark's options]: every row beside its budget.
//
// Exit status: 0 when all rows hold, 1 when one does not or is broken, 2 for wrong usage. With --quick everything is
// small and measured once, and only broken rows count.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "Report.h"
#include "ReportFiles.h"
#include "Subjects.h"

namespace {

using namespace quill::bench;

struct Options {
    bool quick = false;
    std::string reportDirectory;
};

/** False for what is no option of this program. */
bool parse(int argc, char** argv, Options* options) {
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--quick") == 0) {
            options->quick = true;
        } else if (strcmp(argv[i], "--report") == 0 && i + 1 < argc) {
            options->reportDirectory = argv[++i];
        } else {
            fprintf(stderr, "quill_bench: no such option: %s\n", argv[i]);
            return false;
        }
    }
    return true;
}

void addRows(const Effort& effort) {
    addTileCutting(effort);
    addConversions(effort);
    addThumbnail(effort);
    addLivePhoto(effort);
    addFreeCodecStills(effort);
    addRealEncoderStills(effort);
    addHeifEnc(effort);
}

/** Says how it went; the exit status. */
int conclude(const Report& report, bool quick) {
    const std::vector<Result>& results = report.results();
    const auto missed = std::count_if(results.begin(), results.end(), [](const Result& r) { return !r.holds(); });
    printf("%zu rows, %td over budget, %d broken%s\n", results.size() + static_cast<size_t>(report.broken()), missed,
           report.broken(), quick ? " (quick: ratios mean nothing)" : "");
    if (report.broken() > 0 || results.empty()) return 1;
    return quick || missed == 0 ? 0 : 1;
}

int runRows(const Options& options) {
    const Effort effort = options.quick ? quickEffort() : fullEffort();
    addRows(effort);
    Report report;
    benchmark::RunSpecifiedBenchmarks(&report);
    if (!options.reportDirectory.empty()) {
        writeReportFiles(options.reportDirectory, report.results(), scalingOf(effort));
    }
    return conclude(report, options.quick);
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QUILL_LOG", "silent", 0);
    benchmark::Initialize(&argc, argv);
    Options options;
    if (!parse(argc, argv, &options)) return 2;
    try {
        return runRows(options);
    } catch (const std::exception& exception) {
        fprintf(stderr, "quill_bench: %s\n", exception.what());
        return 1;
    }
}
