// The installed quill still against libheif's encoder on the same photograph, with the same x265 preset, tuned for
// PSNR.
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

constexpr char kInstalled[] = QUILL_BUILD_DIR "/bench/installed";

std::string quillStill(const std::string& photographs, const std::string& output) {
    return std::string(kInstalled) + "/bin/quill still --preset ultrafast " + photographs + " " + output +
           " 2>/dev/null";  // what the photograph's still cannot keep is told there
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

/** The one of heif-enc's qualities that brings its luma nearest to ours. Leaves both stills written. */
int matchingQuality(const std::string& name, const std::string& ours, const std::string& theirs) {
    const test::ReadJpeg photograph = test::readJpeg(readPhotograph(name));
    runShell(quillStill(photographPath(name), "-o " + ours));
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
    if (low < 100 && theirPsnr(low + 1) - ourPsnr < ourPsnr - theirPsnr(low)) ++low;
    printf("note: luma of quill still -q 95: %.2f dB; of heif-enc -q %d: %.2f dB\n", ourPsnr, low, theirPsnr(low));
    return low;
}

/** Both programs' commands for one photograph, and what they write. */
struct Contest {
    explicit Contest(const std::string& name) {
        runShell(std::string("cmake --install '" QUILL_BUILD_DIR "' --prefix '") + kInstalled + "'");
        const int quality = inOwnProcess([&] { return matchingQuality(name, ourFile, theirFile); });
        ourCommand = quillStill(photographPath(name), "-o " + ourFile);
        theirCommand = heifEnc(photographPath(name), theirFile, quality);
        for (int i = 0; i < (quick ? 2 : 20); ++i) {
            const std::string link = folder.path() + "/" + std::to_string(i) + ".jpg";
            std::filesystem::create_symlink(photographPath(name), link);
            theirCommands += heifEnc(link, theirFile, quality) + " && ";
        }
        theirCommands += "true";
        ourCommandForAll = quillStill(folder.path() + "/*.jpg", "-d " + folder.path());
    }

    const test::TemporaryFolder folder;
    const std::string ourFile = folder.path() + "/ours.heic", theirFile = folder.path() + "/theirs.heic";
    std::string ourCommand, theirCommand, ourCommandForAll, theirCommands;
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

Figures timesOfTwentyBesideHeifEnc() {
    const auto ours = [] { runShell(contest().ourCommandForAll); };
    return fastest(ours, [] { runShell(contest().theirCommands); });
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
