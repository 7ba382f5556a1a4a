#include "support/Shot.h"

#include <dirent.h>
#include <sched.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <memory>
#include <thread>

#include "HeifWriterJni.h"
#include "support/FakeVm.h"
#include "support/FileCalls.h"
#include "support/HeifReader.h"
#include "testing/Clock.h"
#include "testing/Faults.h"

namespace quill::test {

namespace {

using namespace android;
using quill::host::Clock;
using quill::host::Faults;
using Bytes = std::vector<uint8_t>;

constexpr int kRows = 96;
constexpr double kTimeless = 1e-7;
constexpr int kPollsInTenSeconds = 5000;
constexpr char kLooperDone[] = "D/QuillHeifWriter: kWhatProcessInputFrameNotify done";
/** A box that readers skip. */
const Bytes kHeldBefore = {0, 0, 0, 16, 'f', 'r', 'e', 'e', 'b', 'e', 'f', 'o', 'r', 'e', '.', '.'};
const Bytes kExif = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
constexpr size_t kVideoBytes = 10000, kGainMapBytes = 200, kExtenderBytes = 60;

uint32_t word(const Bytes& bytes, size_t at) {
    return uint32_t{bytes[at]} << 24 | uint32_t{bytes[at + 1]} << 16 | uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

/** The types of the boxes from `at` on, those of the still as one. */
std::string boxesOf(const Bytes& file, size_t at) {
    std::string types;
    while (at < file.size()) {
        const size_t left = file.size() - at;
        const size_t size = left < 8 ? 0 : word(file, at);
        if (size < 8 || size > left) return types + ", then cut";
        const std::string type(file.begin() + static_cast<ptrdiff_t>(at) + 4,
                               file.begin() + static_cast<ptrdiff_t>(at) + 8);
        if (type == "ftyp") types += " still";
        if (type != "ftyp" && type != "meta" && type != "mdat") types += " " + type;
        at += size;
    }
    return types;
}

std::string describe(const Bytes& file) {
    if (file == kHeldBefore) return " as it was";
    if (file.size() < kHeldBefore.size() || !std::equal(kHeldBefore.begin(), kHeldBefore.end(), file.begin())) {
        return " DAMAGED";
    }
    return boxesOf(file, kHeldBefore.size());
}

int entriesOf(const char* folder) {
    int count = 0;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder), closedir);
    while (readdir(entries.get()) != nullptr) ++count;
    return count;
}

/** Once a thread is joined, the system may take a moment to forget it. */
int threadsBeyond(int expected) {
    int beyond = 0;
    for (int tries = 0; tries < 10000 && (beyond = entriesOf("/proc/self/task") - expected) > 0; ++tries) sched_yield();
    return std::max(beyond, 0);
}

/** A sanitizer starts one of its own beside the first in a process, and keeps it. */
int threadsBefore() {
    static const bool started = [] {
        std::thread([] {}).join();
        return true;
    }();
    return started ? entriesOf("/proc/self/task") : 0;
}

void fill(const TemporaryFile& file, const Bytes& bytes) {
    if (write(file.fd(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) _exit(1);
}

/** Made once a process and size. */
const CameraFrame& frameOf(const Scene& scene) {
    static std::map<int, CameraFrame> frames;
    CameraFrame& frame = frames[scene.width];
    if (frame.bytes.empty()) frame = makeFrame(scene.format, {scene.width, kRows, scene.width, kRows});
    return frame;
}

/** The Java side of a shot. */
struct App {
    explicit App(const Scene& shown) : scene(shown), bitmap(shown.width, kRows, frame().bytes) {
        fill(output, kHeldBefore);
        fill(video, Bytes(kVideoBytes, 'v'));
        fill(gainMap, Bytes(kGainMapBytes, 'g'));
        array.bytes.assign(frame().bytes.begin(), frame().bytes.end());
        exif.bytes.assign(kExif.begin(), kExif.end());
        extender.bytes.assign(kExtenderBytes, 'x');
        outputFd.fd = output.fd();
        videoFd.fd = video.fd();
        gainMapFd.fd = gainMap.fd();
        options.fields = {{"xmpData", FakeVm::asJava(&xmp)},
                          {"fileExtender", FakeVm::asJava(&extender)},
                          {"gainmapFd", FakeVm::asJava(&gainMapFd)},
                          {"videoFd", FakeVm::asJava(&videoFd)}};
        JNI_OnLoad(java.vm(), nullptr);
    }

    const CameraFrame& frame() const { return frameOf(scene); }
    jobject self() { return FakeVm::asJava(&object); }
    jlong setUp() {
        const jlong handle = nativeSetup(java.env(), self());
        const Geometry& g = frame().geometry;
        nativeCreate(java.env(), self(), handle, g.width, g.height, g.stride, g.sliceHeight, scene.format, 90, 90);
        return handle;
    }
    jlong write(jlong handle) {
        const jbyteArray pixels = FakeVm::asJava(&array);
        const jbyteArray block = FakeVm::asJava(&exif);
        const jobject fd = FakeVm::asJava(&outputFd);
        const jobject asked = FakeVm::asJava(&options);
        if (scene.bitmap) {
            const jobject picture = FakeVm::asJava(&bitmap);
            return nativeCreateLivePhotoByBmp(java.env(), self(), handle, picture, block, fd, asked);
        }
        if (scene.live) return nativeCreateLivePhoto(java.env(), self(), handle, pixels, block, fd, asked);
        return nativeProcessHeicPhotoFrame(java.env(), self(), handle, pixels, block, fd);
    }
    void destroy(jlong handle) { nativeDestory(java.env(), self(), handle); }
    bool released() const { return array.pins + exif.pins + extender.pins + bitmap.pixels.pins == 0; }

    const Scene& scene;
    const TemporaryFile output, video, gainMap, later;
    FakeVm java;
    FakeVm::Object object, outputFd, videoFd, gainMapFd, options;
    FakeVm::Array array, exif, extender;
    FakeVm::Bitmap bitmap;
    FakeVm::Text xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
};

/** `write`, its time-out without the time as soon as nothing else is left to come. */
jlong writeHurried(App& app, jlong handle, const LogCapture& log, const std::function<bool()>& blocked) {
    bool hurried = false;  // asked no more then: what is left are thousands of polls
    const FileCalls calls([&] {
        if (hurried || !(blocked() || log.has(kLooperDone))) return;
        hurried = true;
        Clock::instance().setScale(kTimeless);
    });
    return app.write(handle);
}

/** The app has been told of a failure, closes its file and opens another, which gets the same number. */
void letGoOn(const App& app, const LogCapture& log) {
    dup2(app.later.fd(), app.output.fd());
    Clock::instance().setScale(1);
    Faults::instance().release();
    log.waitFor(kLooperDone);
}

void readBack(const App& app, bool decode, ShotOutcome* outcome) {
    outcome->file = describe(app.output.bytes());
    if (!app.later.bytes().empty()) outcome->file += " in another file";
    if (outcome->file.find(" still") != 0) return;
    const ReadStill read = readStill(app.output.path(), decode);
    if (!read.error.empty()) outcome->file += " (" + read.error + ")";
    if (decode) outcome->luma = psnr(app.frame().shown, read.planes).luma;
}

}  // namespace

std::string ShotOutcome::text() const {
    return std::to_string(result) + (polls >= kPollsInTenSeconds ? " after 10 s:" : ":") + file;
}

ShotOutcome shoot(const Scene& scene, bool decode) {
    return shoot(
            scene, Patience::kUntilDone, [] { return false; }, decode);
}

ShotOutcome shoot(const Scene& scene, Patience patience, const std::function<bool()>& blocked, bool decode) {
    ShotOutcome outcome;
    App app(scene);
    const LogCapture log;
    const int descriptors = entriesOf("/proc/self/fd");
    const int threads = threadsBefore();
    const jlong handle = app.setUp();
    const auto givenUp = [&] { return patience != Patience::kUntilDone && blocked(); };
    outcome.result = static_cast<long>(writeHurried(app, handle, log, givenUp));
    outcome.polls = Faults::instance().occurrences()["usleep"];
    if (patience == Patience::kAfterwards) letGoOn(app, log);
    app.destroy(handle);
    Clock::instance().setScale(1);
    readBack(app, decode, &outcome);
    outcome.log = log.lines();
    outcome.leakedDescriptors = entriesOf("/proc/self/fd") - descriptors;
    outcome.leakedThreads = threadsBeyond(threads);
    outcome.released = app.released();
    return outcome;
}

}  // namespace quill::test
