#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "Budgets.h"
#include "Rows.h"

namespace quill::bench {

struct Result {
    Budget budget;
    Figures figures;
    bool holds() const { return figures.ratio <= budget.most; }
};

/** Prints each row as it comes, and keeps it. */
class Report : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    const std::vector<Result>& results() const { return mResults; }
    /** Rows that gave no figures. */
    int broken() const { return mBroken; }

  private:
    std::vector<Result> mResults;
    int mBroken = 0;
};

/** "12.3 ms", "64.0 MiB". */
std::string quantity(double value, Unit unit);

}  // namespace quill::bench
