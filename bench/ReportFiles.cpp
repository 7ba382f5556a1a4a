#include "ReportFiles.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

namespace quill::bench {

namespace {

std::string fixed(double value) {
    char text[32];
    snprintf(text, sizeof text, "%.2f", value);
    return text;
}

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

std::string machine() {
    utsname system{};
    uname(&system);
    const double gibibytes = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE)) /
                             (1024.0 * 1024 * 1024);
    char date[16];
    const time_t now = time(nullptr);
    strftime(date, sizeof date, "%Y-%m-%d", gmtime(&now));
    char text[256];
    snprintf(text, sizeof text, "Measured on %s: %s, %ld cores, %.0f GiB, %s, Linux %s, compiled by %s %s.", date,
             processorName().c_str(), sysconf(_SC_NPROCESSORS_ONLN), gibibytes, system.machine, system.release,
             QUILL_COMPILER, __VERSION__);
    return text;
}

void writeTable(std::ofstream& file, const std::vector<Result>& results) {
    file << machine() << "\n\n| row | what | bound | measured | bound | ratio | budget | |\n"
         << "|---|---|---|--:|--:|--:|--:|---|\n";
    std::set<std::string> remarks;
    for (const Result& result : results) {
        const auto& [budget, figures] = result;
        file << "| " << budget.row << " | " << budget.measured << " | " << budget.bound << " | "
             << quantity(figures.measured, budget.unit) << " | " << quantity(figures.bound, budget.unit) << " | "
             << fixed(figures.ratio) << " | " << fixed(budget.most) << " | "
             << (result.holds() ? "holds" : "**missed**") << " |\n";
        if (!figures.remark.empty()) remarks.insert(figures.remark);
    }
    for (const std::string& remark : remarks) file << "\nheif-enc: " << remark << ".\n";
}

void writeRatios(std::ofstream& file, const std::vector<Result>& results) {
    file << "row\tratio\tbudget\n";
    for (const Result& result : results) {
        file << result.budget.row << '\t' << fixed(result.figures.ratio) << '\t' << fixed(result.budget.most) << '\n';
    }
}

void writeScaling(std::ofstream& file, const std::vector<ScalingPoint>& points) {
    file << "megapixels\tmilliseconds\tbudget\tmebibytes\n";
    for (const ScalingPoint& point : points) {
        file << point.megapixels << '\t' << 1e3 * point.seconds << '\t' << 1e3 * point.boundSeconds << '\t'
             << point.peakBytes / (1024 * 1024) << '\n';
    }
}

template <typename Write, typename Content>
void writeFile(const std::string& path, Write write, const Content& content) {
    std::ofstream file(path);
    write(file, content);
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

}  // namespace

void writeReportFiles(const std::string& directory, const std::vector<Result>& results,
                      const std::vector<ScalingPoint>& scaling) {
    std::filesystem::create_directories(directory);
    writeFile(directory + "/table.md", writeTable, results);
    writeFile(directory + "/ratios.tsv", writeRatios, results);
    writeFile(directory + "/scaling.tsv", writeScaling, scaling);
}

}  // namespace quill::bench
