// Whole stills: through a codec that costs nothing, and through x265.
#include <algorithm>
#include <map>
#include <string>

#include "Processes.h"
#include "Rows.h"
#include "Scaling.h"
#include "Subjects.h"

namespace quill::bench {

namespace {

constexpr double kSecondsPerTwelveMegapixels = 0.010;
constexpr double kSparePeak = 64 << 20;
constexpr double kSmallestPeak = 1 << 20;  // below it other things than the picture's size decide

/** One kind of still, measured in a process of its own. */
struct StillFigures {
    Figures times;
    double peakBytes;  ///< beside the frame
};

StillFigures measureStill(const std::string& device, const std::string& format, int width, int height, int pairs,
                          const std::string& bound) {
    const std::vector<double> numbers = askChild(
            {"still", device, format, std::to_string(width), std::to_string(height), std::to_string(pairs), bound});
    return {{numbers.at(0), numbers.at(1), numbers.at(2), ""}, numbers.at(3)};
}

/** By row: measured once a run, for several rows are made of the same stills. */
std::map<std::string, StillFigures>& freeStills() {
    static std::map<std::string, StillFigures> known;
    return known;
}

const StillFigures& freeStill(const StillSize& size, int pairs) {
    const auto found = freeStills().find(size.row);
    if (found != freeStills().end()) return found->second;
    return freeStills()[size.row] = measureStill("free-codec", "nv12", size.width, size.height, pairs, "polling");
}

Figures againstPolling(const Figures& still, double megapixels) {
    const double bound = still.bound + kSecondsPerTwelveMegapixels * std::max(1.0, megapixels / 12);
    return {still.measured, bound, still.measured / bound, ""};
}

/** What a megapixel costs in the largest picture, against the next smaller one. */
template <typename Cost>
Figures growth(const Effort& effort, Cost cost) {
    const auto perMegapixel = [&](const StillSize& size) {
        return cost(freeStill(size, effort.stills)) / size.megapixels();
    };
    const double large = perMegapixel(effort.sizes.back());
    const double small = perMegapixel(effort.sizes[effort.sizes.size() - 2]);
    return {large, small, large / small, ""};
}

/** The layouts that are converted for the thumbnail, where NV12 is read as it lies. */
void addConvertedStill(const char* row, const char* format, const Effort& effort) {
    addRow(row, [=] {
        const Geometry& frame = effort.frame;
        const double megapixels = static_cast<double>(frame.width) * frame.height / 1e6;
        return againstPolling(
                measureStill("free-codec", format, frame.width, frame.height, effort.stills, "polling").times,
                megapixels);
    });
}

void addMemory(const char* row, const char* format, const Effort& effort) {
    addRow(row, [=, frame = effort.frame] {
        const double peak = measureStill("workstation", format, frame.width, frame.height, 0, "none").peakBytes;
        return Figures{peak, kSparePeak, peak / kSparePeak, ""};
    });
}

}  // namespace

std::vector<ScalingPoint> scalingOf(const Effort& effort) {
    std::vector<ScalingPoint> points;
    for (const StillSize& size : effort.sizes) {
        if (freeStills().count(size.row) == 0) continue;
        const StillFigures& still = freeStill(size, effort.stills);
        const Figures figures = againstPolling(still.times, size.megapixels());
        points.push_back({size.megapixels(), figures.measured, figures.bound, still.peakBytes});
    }
    return points;
}

void addFreeCodecStills(const Effort& effort) {
    for (const StillSize& size : effort.sizes) {
        addRow(size.row, [=] { return againstPolling(freeStill(size, effort.stills).times, size.megapixels()); });
    }
    addConvertedStill("still/12mp-i420", "i420", effort);
    addConvertedStill("still/12mp-p010", "p010", effort);
    addConvertedStill("still/12mp-rgba", "rgba", effort);
    addRow("linear/time",
           [=] { return growth(effort, [](const StillFigures& still) { return still.times.measured; }); });
    addRow("linear/memory", [=] {
        return growth(effort, [](const StillFigures& still) { return std::max(kSmallestPeak, still.peakBytes); });
    });
}

void addRealEncoderStills(const Effort& effort) {
    addRow("encoder/nv12", [=] {
        const Geometry& frame = effort.frame;
        return measureStill("workstation", "nv12", frame.width, frame.height, effort.stills, "encoder").times;
    });
    addMemory("memory/nv12", "nv12", effort);
    addMemory("memory/p010", "p010", effort);
    addMemory("memory/rgba", "rgba", effort);
}

}  // namespace quill::bench
