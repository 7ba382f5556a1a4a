// ./quill still against libheif's encoder on the same photograph: the same x265 preset, and of heif-enc's qualities the
// one whose picture is nearest to ours.
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>

#include "Frames.h"
#include "Processes.h"
#include "Rows.h"
#include "Subjects.h"
#include "support/HeifReader.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

namespace {

using Command = std::vector<std::string>;

constexpr int kHighestQuality = 100;
constexpr char kLibraryPath[] = "-Djava.library.path=" QUILL_LIBRARY_DIR;

/** What ./quill still starts once everything is installed and built. */
Command quillStill(const std::string& photograph, const std::string& output) {
    return {"env",
            "QUILL_PROPERTIES=debug.quill.host.x265.preset=ultrafast",
            QUILL_JAVA,
            "-XX:MaxRAMPercentage=75",
            "-XX:+UseSerialGC",
            kLibraryPath,
            "-cp",
            QUILL_CLASS_PATH,
            "com.quill.cli.Quill",
            "still",
            photograph,
            "-o",
            output};
}

Command heifEnc(const std::string& photograph, const std::string& output, int quality) {
    return {"heif-enc", photograph,         "-o", output,     "-q", std::to_string(quality),
            "-p",       "preset=ultrafast", "-p", "tune=psnr"};
}

/** Decibels of the luma of a still against the photograph's. */
double lumaPsnr(const Photograph& photograph, const std::string& still) {
    const test::ReadStill read = test::readStill(still);
    if (!read.error.empty() || read.planes.width != photograph.width || read.planes.height != photograph.height) {
        throw std::runtime_error(still + " does not hold the photograph: " + read.error);
    }
    double sum = 0;
    for (size_t i = 0; i < read.planes.y.size(); ++i) {
        const double difference = read.planes.y[i] - photograph.yuv[3 * i];
        sum += difference * difference;
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(read.planes.y.size()) / sum);
}

double sizeOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) throw std::runtime_error("no file " + path);
    return static_cast<double>(status.st_size);
}

/** Both programs at work on one photograph. */
class Contest {
  public:
    Contest(const std::string& photograph, int times)
            : mPath(photographPath(photograph)), mPhotograph(readPhotograph(photograph)) {
        run(quillStill(mPath, ours()));
        mOurPsnr = lumaPsnr(mPhotograph, ours());
        findQuality();
        run(heifEnc(mPath, theirs(), mQuality));
        measure(times);
    }

    Figures time, memory, bytes;

  private:
    std::string ours() const { return mFolder.path() + "/ours.heic"; }
    std::string theirs() const { return mFolder.path() + "/theirs.heic"; }

    /** Through a small process of its own, as peaks want it. */
    static Usage usage(Command command) {
        command.insert(command.begin(), "command");
        const std::vector<double> numbers = askChild(command);
        return {numbers.at(0), numbers.at(1)};
    }

    void measure(int times) {
        std::vector<double> ourSeconds, theirSeconds, ourPeaks, theirPeaks;
        for (int i = 0; i < times; ++i) {
            const Usage our = usage(quillStill(mPath, ours()));
            const Usage their = usage(heifEnc(mPath, theirs(), mQuality));
            ourSeconds.push_back(our.seconds);
            theirSeconds.push_back(their.seconds);
            ourPeaks.push_back(our.peakBytes);
            theirPeaks.push_back(their.peakBytes);
        }
        time = figures(median(ourSeconds), median(theirSeconds));
        memory = figures(median(ourPeaks), median(theirPeaks));
        bytes = figures(sizeOf(ours()), sizeOf(theirs()));
    }

    double theirPsnr(int quality) {
        const auto known = mTheirPsnr.find(quality);
        if (known != mTheirPsnr.end()) return known->second;
        run(heifEnc(mPath, theirs(), quality));
        return mTheirPsnr[quality] = lumaPsnr(mPhotograph, theirs());
    }

    /** The lowest quality with our PSNR at least, or the one below it when that is nearer. */
    void findQuality() {
        int low = 1, high = kHighestQuality;
        while (low < high) {
            const int middle = (low + high) / 2;
            if (theirPsnr(middle) >= mOurPsnr) {
                high = middle;
            } else {
                low = middle + 1;
            }
        }
        const bool lowerIsNearer = low > 1 && mOurPsnr - theirPsnr(low - 1) < theirPsnr(low) - mOurPsnr;
        mQuality = lowerIsNearer ? low - 1 : low;
    }

    Figures figures(double our, double their) {
        char remark[96];
        snprintf(remark, sizeof remark, "luma %.2f dB at -q 95, heif-enc %.2f dB at -q %d", mOurPsnr,
                 theirPsnr(mQuality), mQuality);
        return {our, their, our / their, remark};
    }

    const test::TemporaryFolder mFolder;
    const std::string mPath;
    const Photograph mPhotograph;
    double mOurPsnr = 0;
    int mQuality = 0;
    std::map<int, double> mTheirPsnr;
};

/** Held once a run, for all three rows. */
const Contest& contest(const Effort& effort) {
    static const Contest held(effort.photograph, effort.stills);
    return held;
}

}  // namespace

void addHeifEnc(const Effort& effort) {
    addRow("heif-enc/time", [=] { return contest(effort).time; });
    addRow("heif-enc/memory", [=] { return contest(effort).memory; });
    addRow("heif-enc/bytes", [=] { return contest(effort).bytes; });
}

}  // namespace quill::bench
