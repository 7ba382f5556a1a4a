// From a camera's frame to a file that another reader opens, and back to what the frame showed.
#include <gmock/gmock.h>

#include <algorithm>

#include "CallLog.h"
#include "support/HeifReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::CallLog;
using testing::ElementsAre;

constexpr Geometry kSmall{300, 200, 300, 200};
constexpr double kFaithful = 46;  // decibels, where 50 are usual

/** Pictures coded whole, then grids: tight and padded, even and odd. */
constexpr Geometry kShapes[] = {
        {300, 200, 300, 200},   {300, 200, 320, 208},   {301, 199, 301, 199},   {301, 199, 320, 200},
        {15, 41, 16, 42},       {1000, 700, 1000, 700}, {1000, 700, 1024, 704}, {1001, 701, 1001, 701},
        {1001, 701, 1024, 704}, {512, 32, 512, 32},
};

class Stills : public testing::TestWithParam<InputColorFormat> {};

TEST_P(Stills, ShowWhatTheFrameShowed) {
    const InputColorFormat format = GetParam();
    for (Geometry shape : kShapes) {
        SCOPED_TRACE(std::to_string(shape.width) + " of " + std::to_string(shape.stride));
        // Pairs cannot be swapped in place where they straddle two rows.
        if (format == FORMAT_NV21) shape.stride += shape.stride % 2;
        Still still(makeFrame(format, shape));
        const std::vector<uint8_t> before = still.frame.bytes;
        CallLog::instance().start();
        ASSERT_EQ(0, still.write());
        if (format != FORMAT_NV21) {
            EXPECT_TRUE(still.frame.bytes == before) << "a frame is only read";
        }
        EXPECT_THAT(CallLog::instance().of("GraphicBuffer::lock"), testing::Each("48")) << "to write often";
        const std::string track = CallLog::instance().of("MediaMuxer::addTrack").at(0);
        EXPECT_THAT(track, testing::HasSubstr("is-default=1"));
        EXPECT_EQ(format == FORMAT_P010, track.find("BitDepth=10") != std::string::npos);
        EXPECT_EQ(format == FORMAT_P010, track.find("BitDepth") != std::string::npos);
        const ReadStill read = readStill(still.file.path());
        ASSERT_EQ("", read.error);
        EXPECT_EQ(shape.width, read.shownWidth);
        EXPECT_EQ(shape.height, read.shownHeight);
        EXPECT_EQ(1, read.topLevelImages);
        EXPECT_EQ(format == FORMAT_P010 ? 10 : 8, read.planes.depth);
        EXPECT_GE(psnr(still.frame.shown, read.planes), kFaithful);
    }
}

INSTANTIATE_TEST_SUITE_P(, Stills,
                         testing::Values(FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21));

TEST(WriterStill, VendorSurfacesCarryTenBits) {
    setenv("QUILL_DEVICE", "vendor-qti", 1);
    Still still(makeFrame(FORMAT_P010, {601, 602, 640, 602}));
    ASSERT_EQ(0, still.write());
    EXPECT_GE(psnr(still.frame.shown, readStill(still.file.path()).planes), kFaithful);
}

TEST(WriterStill, RotationTurnsTheImage) {
    for (const int rotation : {-90, 0, 90, 180, 270}) {
        const LogCapture log;
        CallLog::instance().start();
        Still still(makeFrame(FORMAT_NV12, kSmall), rotation);
        EXPECT_THAT(CallLog::instance().of("ALooper::start"), ElementsAre("0 1 -16", "0 0 -16")) << "as fast as audio";
        ASSERT_EQ(0, still.write());
        EXPECT_EQ(rotation >= 1, log.has("D/QuillHeifWriter: setting rotation: " + std::to_string(rotation)));
        const std::vector<std::string> hints = CallLog::instance().of("MediaMuxer::setOrientationHint");
        EXPECT_EQ(rotation >= 1 ? std::vector{std::to_string(rotation)} : std::vector<std::string>{}, hints);
        const ReadStill read = readStill(still.file.path());
        EXPECT_EQ(rotation == 90 || rotation == 270 ? 200 : 300, read.shownWidth) << rotation;
        if (rotation != 90) continue;
        for (int i = 0; i < 300 * 200; ++i) {  // clockwise: what was at the bottom is on the left
            const int was = still.frame.shown.y.at((199 - i % 200) * 300 + i / 200);
            ASSERT_NEAR(was, read.planes.y.at(i), 20) << i;
        }
    }
}

TEST(WriterStill, StepsAreLoggedInOrder) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    const LogCapture log;
    {
        Still still(makeFrame(FORMAT_NV21, kSmall));
        ASSERT_EQ(0, still.write());
        EXPECT_TRUE(log.waitFor("D/QuillHeifWriter: kWhatProcessInputFrameNotify done"));
    }
    std::vector<std::string> lines = log.of("QuillHeifWriter");
    // The caller's line comes in its own order beside the looper's.
    const auto callers = std::find(lines.begin(), lines.end(), "D/Encode Finish: 1");
    ASSERT_NE(lines.end(), callers);
    lines.erase(callers);
    EXPECT_THAT(lines,
                ElementsAre("D/QuillHeifWriter()", "D/HeifEncoder Init Completed", "D/INPUT FRAME ADD (INPUTFRAME)",
                            "D/input frame size : 1", "D/kWhatProcessInputFrameNotify, inputFrames size 1",
                            "D/[NV21 to NV12]width: 300, height: 200, stride: 300 X 200,start!!!",
                            "D/[NV21 to NV12] END!!!", "D/encoded output buffers size, 1", "D/muxer image item begin!",
                            "D/muxer image item end! size 1", "D/process Heif file finish",
                            "D/kWhatProcessInputFrameNotify done", "I/stop looper", "D/~QuillHeifWriter()"));
}

}  // namespace
