// What is measured in a process of its own: a device is chosen once a process, and so is its peak of memory. Prints
// figures on one line.
//
//   still DEVICE FORMAT WIDTH HEIGHT PAIRS none|polling|encoder
//       seconds, seconds of the bound, ratio, peak bytes beside the frame
//   command PROGRAM [ARGUMENT]...
//       seconds, peak bytes
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "EncoderAlone.h"
#include "Frames.h"
#include "PeakMemory.h"
#include "Processes.h"
#include "Rows.h"
#include "WholeStill.h"

namespace {

using namespace quill::bench;
using quill::test::Geometry;

constexpr char kPhotograph[] = "phone-3264x2448.jpg";
/** Enough to load all code that a still runs through, a grid's included. */
constexpr Geometry kSmall{600, 600, 600, 600};

PairedTimes timePairs(int pairs, Sides sides) {
    PairedTimes times(std::move(sides));
    for (int i = 0; i < pairs; ++i) times.timePair();
    return times;
}

/** Polls are slept through: only the still is slowed down by what else the machine does, so its fastest counts. */
Figures timeBesidePolling(int pairs, const std::function<void()>& still) {
    const PairedTimes times = timePairs(pairs, {still, waitAsPolling});
    const double bound = times.figures().bound;
    return {times.fastest(), bound, times.fastest() / bound, ""};
}

Figures timeStills(const std::string& bound, int pairs, WholeStill& still, uint8_t* frame, const Geometry& geometry) {
    const auto write = [&] { still.write(frame); };
    if (bound == "none") return {};
    if (bound == "polling") return timeBesidePolling(pairs, write);
    if (bound != "encoder") throw std::invalid_argument("no bound is called " + bound);
    EncoderAlone encoder(frame, geometry);
    return timePairs(pairs, {write, [&] { encoder.encode(); }}).figures();
}

void measureStill(const std::string& formatName, const Geometry& geometry, int pairs, const std::string& bound) {
    const Photograph photograph = readPhotograph(kPhotograph);
    const android::InputColorFormat format = formatNamed(formatName);
    {
        std::vector<uint8_t> small = cameraFrame(photograph, format, kSmall);
        WholeStill(format, kSmall, photograph.exif).write(small.data());
    }
    const PeakMemory memory;
    std::vector<uint8_t> frame = cameraFrame(photograph, format, geometry);
    WholeStill still(format, geometry, photograph.exif);
    still.write(frame.data());
    const double peak = memory.peakBytes() - static_cast<double>(frame.size());

    const Figures figures = timeStills(bound, pairs, still, frame.data(), geometry);
    printf("%.9g %.9g %.9g %.0f\n", figures.measured, figures.bound, figures.ratio, peak);
}

int usage() {
    fprintf(stderr,
            "usage: quill_bench_child still DEVICE FORMAT WIDTH HEIGHT PAIRS none|polling|encoder\n"
            "       quill_bench_child command PROGRAM [ARGUMENT]...\n");
    return 2;
}

int runChild(const std::vector<std::string>& words) {
    if (words.size() == 7 && words[0] == "still") {
        setenv("QUILL_DEVICE", words[1].c_str(), 1);
        const int width = std::stoi(words[3]), height = std::stoi(words[4]);
        measureStill(words[2], {width, height, width, height}, std::stoi(words[5]), words[6]);
        return 0;
    }
    if (words.size() < 2 || words[0] != "command") return usage();
    const Usage used = usageOf({words.begin() + 1, words.end()});
    printf("%.9g %.0f\n", used.seconds, used.peakBytes);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return runChild({argv + 1, argv + argc});
    } catch (const std::exception& exception) {
        fprintf(stderr, "quill_bench_child: %s\n", exception.what());
        return 1;
    }
}
