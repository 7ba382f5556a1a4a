// Calls that have returned -1 while the platform still held the frame: they are over for the app.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

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
// Its last pair of the last row reaches a byte behind the array.
const PhotoCase kOdd{"", "", FORMAT_NV21, false, false, 1041};

/** An app whose writer has given up on a frame while the looper stands in `call`. */
struct LateFrame : testing::Test {
    void SetUp() override { setProperties("debug.quill.host.encoder=free"); }

    void giveUp(App& app, const char* call) {
        Faults::instance().inject(call, Fault::stalling());
        app.setUp();
        EXPECT_EQ(-1, writeHurried(app, log, [call] { return isMade(call); }));
        EXPECT_TRUE(app.holdsNothing());
        EXPECT_EQ(" as it was", app.fileText());
    }

    LogCapture log;
};

TEST_F(LateFrame, SecondCreateReturnsWhileTheLooperIsHeld) {
    App app(kOdd);
    giveUp(app, "MediaCodec::dequeueOutputBuffer");
    struct stat output {
    }, other{};
    fstat(app.output.fd(), &output);
    for (int fd = 3; fd < 64; ++fd) {
        const bool isOutput = fstat(fd, &other) == 0 && other.st_ino == output.st_ino;
        EXPECT_FALSE(isOutput && fcntl(fd, F_GETFD) == 0) << "a child would inherit the app's file";
    }
    app.create();
    EXPECT_TRUE(log.has("E/QuillHeifWriter: The writer is at work on a frame and is not started again"));
    app.destroy();
}

TEST_F(LateFrame, SecondFrameIsRefusedAtOnceAndHoldsNothing) {
    for (const auto& [call, fault] : {std::pair("MediaCodec::getInputBuffer", Fault::failing(INVALID_OPERATION)),
                                      std::pair("MediaCodec::dequeueOutputBuffer", Fault::stalling())}) {
        Faults::instance().reset();
        Faults::instance().inject(call, fault, 2);
        App half(kOdd);
        const Holdings before = Holdings::now();
        half.setUp();
        EXPECT_EQ(-1, writeHurried(half, log, [c = call] { return isMade(c, 2); })) << "the first frame, half-way";
        const int polls = Faults::instance().occurrences()["usleep"];
        log.clear();
        EXPECT_EQ(-1, half.write());
        EXPECT_EQ(polls, Faults::instance().occurrences()["usleep"]) << "it waits for nothing";
        EXPECT_TRUE(log.has("E/QuillHeifWriter: The encoder has had its one frame; the next one takes another writer"));
        EXPECT_TRUE(half.holdsNothing());
        EXPECT_EQ(" as it was", half.fileText());
        Clock::instance().setScale(1);
        half.destroy();
        Faults::instance().release();
        EXPECT_EQ("", leakedSince(before)) << "its codec would end what the next one stalls in";
    }
}

TEST_F(LateFrame, PacketOfALaterCallIsNotItsOwn) {
    App app({"", "", FORMAT_NV12, false, false});
    giveUp(app, "MediaMuxer::start");
    app.photo.live = true;
    EXPECT_EQ(-1, app.write());
    Faults::instance().release();
    EXPECT_TRUE(log.waitFor(kLooperDone));
    app.destroy();
    const std::vector<uint8_t> file = app.output.bytes();
    EXPECT_EQ(" still", app.fileText()) << "the muxer was writing: it may complete the still";
    EXPECT_EQ(std::string::npos, std::string(file.begin(), file.end()).find("xmpmeta"));
}

/** Calls that hold the looper: at the start, in the middle and at the end of a frame. In the last three it muxes. */
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
        const size_t holding = random() % std::size(kHolding);
        const char* const call = kHolding[holding];
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
        const bool muxing = holding + 3 >= std::size(kHolding) && app.fileText() == " as it was";
        Clock::instance().setScale(kImpatient);
        if (failed) app.scribble(!muxing);
        if (chance(3)) app.write();
        if (chance(3)) app.create();
        if (chance(2)) Faults::instance().release();
        app.destroy();
        if (failed) app.scribble(!muxing);
        Faults::instance().release();
        EXPECT_EQ("", leakedSince(before));
        EXPECT_TRUE(app.holdsNothing());
        EXPECT_EQ("", failed ? app.touched() : "");
        Clock::instance().setScale(1);
    }
}

}  // namespace
