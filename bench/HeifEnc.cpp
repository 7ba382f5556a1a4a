// ./quill still against libheif's encoder on the same photograph, with the same x265 preset, tuned for PSNR.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "Measurements.h"
#include "support/HeifReader.h"
#include "support/JpegReader.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

namespace {

/** What ./quill still starts once everything is installed and built. */
std::string quillStill(const std::string& photograph, const std::string& output) {
    return "QUILL_PROPERTIES=debug.quill.host.x265.preset=ultrafast " QUILL_JAVA
           " -XX:MaxRAMPercentage=75 -XX:+UseSerialGC -Djava.library.path='" QUILL_LIBRARY_DIR
           "' -cp '" QUILL_CLASS_PATH "' com.quill.cli.Quill still '" +
           photograph + "' -o '" + output + "'";
}

std::string heifEnc(const std::string& photograph, const std::string& output, int quality) {
    return "heif-enc '" + photograph + "' -o '" + output + "' -q " + std::to_string(quality) +
           " -p preset=ultrafast -p tune=psnr";
}

/** Decibels of the luma of a still against the photograph's. */
double lumaPsnr(const test::ReadJpeg& photograph, const std::string& still) {
    const test::ReadStill read = test::readStill(still);
    if (3 * read.planes.y.size() != photograph.yuv.size())
        throw std::runtime_error("not the photograph: " + read.error);
    double sum = 0;
    for (size_t i = 0; i < read.planes.y.size(); ++i) {
        const double difference = read.planes.y[i] - photograph.yuv[3 * i];
        sum += difference * difference;
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(read.planes.y.size()) / sum);
}

/** The highest of heif-enc's qualities whose luma is no better than ours. Leaves both stills written. */
int matchingQuality(const std::string& name, const std::string& ours, const std::string& theirs) {
    const test::ReadJpeg photograph = test::readJpeg(readPhotograph(name));
    runShell(quillStill(photographPath(name), ours));
    const double ourPsnr = lumaPsnr(photograph, ours);
    const auto theirPsnr = [&](int quality) {
        runShell(heifEnc(photographPath(name), theirs, quality));
        return lumaPsnr(photograph, theirs);
    };
    int low = 1, tooHigh = 101;
    while (tooHigh - low > 1) {
        const int middle = (low + tooHigh) / 2;
        (theirPsnr(middle) <= ourPsnr ? low : tooHigh) = middle;
    }
    printf("note: luma of ./quill still -q 95: %.2f dB; of heif-enc -q %d: %.2f dB\n", ourPsnr, low, theirPsnr(low));
    return low;
}

/** Both programs' commands for one photograph, and what they write. */
struct Contest {
    explicit Contest(const std::string& name) {
        const int quality = inOwnProcess([&] { return matchingQuality(name, ourFile, theirFile); });
        ourCommand = quillStill(photographPath(name), ourFile);
        theirCommand = heifEnc(photographPath(name), theirFile, quality);
    }

    const test::TemporaryFolder folder;
    const std::string ourFile = folder.path() + "/ours.heic", theirFile = folder.path() + "/theirs.heic";
    std::string ourCommand, theirCommand;
};

const Contest& contest() {
    static const Contest held(quick ? "compact-640x480-with-thumbnail.jpg" : kPhotograph);
    return held;
}

}  // namespace

Figures timesBesideHeifEnc() {
    const auto ours = [] { runShell(contest().ourCommand); };
    return fastest(ours, [] { runShell(contest().theirCommand); });
}

Figures peaksBesideHeifEnc() {
    const auto peak = [](const std::string& command) { return runForked([&] { runShell(command); }); };
    return {peak(contest().ourCommand), peak(contest().theirCommand)};
}

Figures filesBesideHeifEnc() {
    const auto bytes = [](const std::string& file) { return static_cast<double>(std::filesystem::file_size(file)); };
    return {bytes(contest().ourFile), bytes(contest().theirFile)};
}

}  // namespace quill::bench
