// Calls that have returned -1 while the platform still held the frame: they are over for the app.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <memory>
#include <random>

#include <utils/Errors.h>

#include "Clock.h"
#include "Faults.h"
#include "support/Photograph.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;

constexpr double kImpatient = 0.02;  // the two seconds that the library waits for a codec that hangs
constexpr char kRefused[] = "E/QuillHeifWriter: The encoder has had its one frame; the next one takes another writer";
const PhotoCase kArray{"array", "", FORMAT_NV21, false, false};
const PhotoCase kBitmap{"bitmap", "", FORMAT_RGBA8888, true, true};

/** An app whose writer has given up on a frame while the looper stands in `call`. */
struct LateFrame : testing::Test {
    void SetUp() override { setProperties("debug.quill.host.encoder=free"); }
    void TearDown() override {
        Faults::instance().reset();
        Clock::instance().setScale(1);
    }

    App& giveUp(const PhotoCase& photo, const char* call) {
        Faults::instance().inject(call, Fault::stalling());
        app = std::make_unique<App>(photo);
        app->setUp();
        EXPECT_EQ(-1, writeHurried(*app, log, [call] { return isMade(call); }));
        EXPECT_TRUE(app->holdsNothing());
        EXPECT_EQ(" as it was", app->fileText());
        return *app;
    }
    void goOn() {
        Clock::instance().setScale(1);
        Faults::instance().release();
        EXPECT_TRUE(log.waitFor(kLooperDone));
    }
    /** The app puts something else into all that is its own, and the looper comes back. */
    void expectUntouchedOnceItGoesOn(const char* call) {
        app->scribble(true);
        goOn();
        app->destroy();
        EXPECT_EQ("", app->touched()) << call;
        log.clear();
        Faults::instance().reset();
    }

    LogCapture log;
    std::unique_ptr<App> app;
};

TEST_F(LateFrame, ArrayAndFileAreTheAppsAgain) {
    for (const char* const call : {"MediaMuxer::create", "MediaCodec::getInputBuffer"}) {
        App& late = giveUp(kArray, call);
        struct stat output {
        }, other{};
        fstat(late.output.fd(), &output);
        for (int fd = 3; fd < 64; ++fd) {
            const bool isOutput = fstat(fd, &other) == 0 && other.st_ino == output.st_ino;
            EXPECT_FALSE(isOutput && fcntl(fd, F_GETFD) == 0) << "a child would inherit the app's file";
        }
        expectUntouchedOnceItGoesOn(call);
    }
}

TEST_F(LateFrame, BitmapAndFileAreTheAppsAgain) {
    for (const char* const call : {"MediaMuxer::create", "ANativeWindow::dequeueBuffer", "GraphicBuffer::lock"}) {
        giveUp(kBitmap, call);
        expectUntouchedOnceItGoesOn(call);
    }
}

TEST_F(LateFrame, SecondCreateReturnsWhileTheLooperIsHeld) {
    App& late = giveUp(kArray, "MediaCodec::dequeueOutputBuffer");
    late.create();
    EXPECT_TRUE(log.has("E/QuillHeifWriter: The writer is at work on a frame and is not started again"));
    late.destroy();
}

TEST_F(LateFrame, SecondFrameIsRefusedAtOnceAndHoldsNothing) {
    for (const auto& [call, fault] : {std::pair("MediaCodec::getInputBuffer", Fault::failing(INVALID_OPERATION)),
                                      std::pair("MediaCodec::dequeueOutputBuffer", Fault::stalling())}) {
        Faults::instance().reset();
        Faults::instance().inject(call, fault, 2);
        App half(kArray);
        const Holdings before = Holdings::now();
        half.setUp();
        EXPECT_EQ(-1, writeHurried(half, log, [c = call] { return isMade(c, 2); })) << "the first frame, half-way";
        const int polls = Faults::instance().occurrences()["usleep"];
        log.clear();
        EXPECT_EQ(-1, half.write());
        EXPECT_EQ(polls, Faults::instance().occurrences()["usleep"]) << "it waits for nothing";
        EXPECT_TRUE(log.has(kRefused));
        EXPECT_TRUE(half.holdsNothing());
        EXPECT_EQ(" as it was", half.fileText());
        Clock::instance().setScale(1);
        half.destroy();
        Faults::instance().release();
        EXPECT_EQ(0, leakedSince(before).threads) << "its codec would end what the next one stalls in";
    }
}

TEST_F(LateFrame, PacketOfALaterCallIsNotItsOwn) {
    App& late = giveUp({"still, then live", "", FORMAT_NV12, false, false}, "MediaMuxer::start");
    late.photo.live = true;
    EXPECT_EQ(-1, late.write());
    goOn();
    late.destroy();
    const std::vector<uint8_t> file = late.output.bytes();
    EXPECT_EQ(" still", late.fileText()) << "the muxer was writing: it may complete the still";
    EXPECT_EQ(std::string::npos, std::string(file.begin(), file.end()).find("xmpmeta"));
}

/** Calls that hold the looper: at the start, in the middle and at the end of a frame. */
constexpr const char* kHolding[] = {"MediaMuxer::create",
                                    "MediaCodec::getInputBuffer",
                                    "MediaCodec::queueInputBuffer",
                                    "MediaCodec::dequeueOutputBuffer",
                                    "MediaCodec::getOutputFormat",
                                    "ANativeWindow::dequeueBuffer",
                                    "GraphicBuffer::lock",
                                    "GraphicBuffer::unlock",
                                    "native_window_api_disconnect",
                                    "MediaMuxer::addTrack",
                                    "MediaMuxer::start",
                                    "MediaMuxer::writeSampleData",
                                    "MediaMuxer::stop"};

TEST(LateFrames, TwoHundredRoundsTouchNothingAndLeaveNothing) {
    constexpr InputColorFormat kFormats[] = {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21};
    setenv("QUILL_DEVICE", "vendor-qti", 1);
    setProperties("debug.quill.host.encoder=free");
    std::mt19937 random(20);
    const auto chance = [&random](int outOf) { return random() % static_cast<uint32_t>(outOf) == 0; };
    for (int round = 0; round < 200; ++round) {
        Faults::instance().reset();
        const char* const call = kHolding[random() % std::size(kHolding)];
        const InputColorFormat format = kFormats[random() % std::size(kFormats)];
        const bool live = chance(2);
        const auto at = static_cast<int>(1 + random() % 3);
        SCOPED_TRACE(std::string(call) + " " + std::to_string(at) + ", format " + std::to_string(format));
        Faults::instance().inject(call, Fault::stalling(), at);
        if (chance(3)) Faults::instance().inject("MediaCodec::stop", Fault::failing(INVALID_OPERATION));
        if (chance(5)) Faults::instance().inject("MediaCodec::stop", Fault::stalling());

        App app({"round", "", format, live, live && format == FORMAT_RGBA8888});
        const Holdings before = Holdings::now();
        app.setUp();
        LogCapture log;
        const bool failed = writeHurried(app, log, [&] { return isMade(call, at); }) == -1;
        const bool muxing = std::string(call).rfind("MediaMuxer::", 0) == 0 && app.fileText() == " as it was" &&
                            call != kHolding[0] && call != std::string("MediaMuxer::addTrack");
        Clock::instance().setScale(kImpatient);
        if (failed) app.scribble(!muxing);
        if (chance(3)) app.write();
        if (chance(3)) app.create();
        if (chance(2)) Faults::instance().release();
        app.destroy();
        if (failed) app.scribble(!muxing);
        Faults::instance().release();
        const Holdings leaked = leakedSince(before);
        EXPECT_EQ(0, leaked.threads);
        EXPECT_EQ(0, leaked.descriptors);
        EXPECT_TRUE(app.holdsNothing());
        EXPECT_EQ("", failed ? app.touched() : "");
        Clock::instance().setScale(1);
    }
}

}  // namespace
