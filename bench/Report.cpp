#include "Report.h"

#include <cmath>
#include <cstdio>

namespace quill::bench {

namespace {

struct Scale {
    double atLeast;
    const char* name;
};

constexpr Scale kTimes[] = {{1, "s"}, {1e-3, "ms"}, {0, "us"}};
constexpr Scale kSizes[] = {{1024 * 1024, "MiB"}, {0, "KiB"}};
constexpr double kSmallest[] = {1e-6, 1024};  // units of the last scales

template <size_t count>
std::string scaled(double value, const Scale (&scales)[count], double smallest) {
    const Scale* scale = scales;
    while (scale->atLeast > std::abs(value)) ++scale;
    char text[32];
    snprintf(text, sizeof text, "%.3g %s", value / (scale->atLeast > 0 ? scale->atLeast : smallest), scale->name);
    return text;
}

void print(const Result& result) {
    const Budget& budget = result.budget;
    const std::string sides =
            quantity(result.figures.measured, budget.unit) + " / " + quantity(result.figures.bound, budget.unit);
    printf("%-16s %6.2f  of %4.2f  %-6s %-20s %s, against %s%s%s\n", budget.row, result.figures.ratio, budget.most,
           result.holds() ? "holds" : "MISSED", sides.c_str(), budget.measured, budget.bound,
           result.figures.remark.empty() ? "" : ": ", result.figures.remark.c_str());
    fflush(stdout);
}

}  // namespace

std::string quantity(double value, Unit unit) {
    return unit == Unit::kSeconds ? scaled(value, kTimes, kSmallest[0]) : scaled(value, kSizes, kSmallest[1]);
}

bool Report::ReportContext(const Context& /* context */) {
    printf("%-16s %6s  %7s  %-6s %-20s\n", "row", "ratio", "budget", "", "measured / bound");
    return true;
}

void Report::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        const std::string& row = run.run_name.function_name;
        if (run.error_occurred) {
            printf("%-16s broken: %s\n", row.c_str(), run.error_message.c_str());
            ++mBroken;
            continue;
        }
        mResults.push_back(
                {budgetOf(row),
                 {run.counters.at("measured"), run.counters.at("bound"), run.counters.at("ratio"), run.report_label}});
        print(mResults.back());
    }
}

}  // namespace quill::bench
