// From a camera's frame to a file that another reader opens, and back to what the frame showed.
#include <gmock/gmock.h>

#include <algorithm>

#include "CallLog.h"
#include "Nv12Conversion.h"
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

struct Quality {
    InputColorFormat format;
    const char* name;
};
constexpr Quality kFormats[] = {
        {FORMAT_I420, "I420"}, {FORMAT_P010, "P010"}, {FORMAT_RGBA8888, "RGBA8888"},
        {FORMAT_NV12, "NV12"}, {FORMAT_NV21, "NV21"},
};

struct Shape {
    const char* name;
    Geometry geometry;
};

void PrintTo(const Quality& quality, std::ostream* out) { *out << quality.name; }
void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.name; }
constexpr Shape kShapes[] = {
        {"Whole", {300, 200, 300, 200}},     {"WholePadded", {300, 200, 320, 208}},
        {"WholeOdd", {301, 199, 301, 199}},  {"WholeOddPadded", {301, 199, 320, 200}},
        {"Grid", {1000, 700, 1000, 700}},    {"GridPadded", {1000, 700, 1024, 704}},
        {"GridOdd", {1001, 701, 1001, 701}}, {"GridOddPadded", {1001, 701, 1024, 704}},
        {"GridOneTile", {512, 32, 512, 32}}, {"WholeTiny", {15, 41, 16, 42}},
};

class Stills : public testing::TestWithParam<std::tuple<Quality, Shape>> {};

TEST_P(Stills, ShowWhatTheFrameShowed) {
    auto [quality, shape] = GetParam();
    // Pairs cannot be swapped in place where they straddle two rows.
    if (quality.format == FORMAT_NV21) shape.geometry.stride += shape.geometry.stride % 2;
    Still still(makeFrame(quality.format, shape.geometry));
    const std::vector<uint8_t> before = still.frame.bytes;
    CallLog::instance().start();
    ASSERT_EQ(0, still.write());
    if (quality.format != FORMAT_NV21) {
        EXPECT_TRUE(still.frame.bytes == before) << "a frame is only read";
    }
    EXPECT_THAT(CallLog::instance().of("GraphicBuffer::lock"), testing::Each("48")) << "to write often";
    const std::string track = CallLog::instance().of("MediaMuxer::addTrack").at(0);
    EXPECT_THAT(track, testing::HasSubstr("is-default=1"));
    EXPECT_EQ(quality.format == FORMAT_P010, track.find("BitDepth=10") != std::string::npos);
    EXPECT_EQ(quality.format == FORMAT_P010, track.find("BitDepth") != std::string::npos);
    const ReadStill read = readStill(still.file.path());
    ASSERT_EQ("", read.error);
    EXPECT_EQ(shape.geometry.width, read.shownWidth);
    EXPECT_EQ(shape.geometry.height, read.shownHeight);
    EXPECT_EQ(1, read.topLevelImages);
    EXPECT_EQ(quality.format == FORMAT_P010 ? 10 : 8, read.planes.depth);
    const Psnr distance = psnr(still.frame.shown, read.planes);
    EXPECT_GE(distance.luma, kFaithful);
    EXPECT_GE(distance.chroma, kFaithful);
}

INSTANTIATE_TEST_SUITE_P(, Stills, testing::Combine(testing::ValuesIn(kFormats), testing::ValuesIn(kShapes)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + std::get<1>(info.param).name;
                         });

TEST(WriterStill, VendorSurfacesCarryTenBits) {
    setenv("QUILL_DEVICE", "vendor-qti", 1);
    Still still(makeFrame(FORMAT_P010, {601, 602, 640, 602}));
    ASSERT_EQ(0, still.write());
    const Psnr distance = psnr(still.frame.shown, readStill(still.file.path()).planes);
    EXPECT_GE(std::min(distance.luma, distance.chroma), kFaithful);
}

TEST(WriterStill, Nv21FrameIsLeftInNv12Order) {
    const Geometry kGeometry{301, 199, 320, 201};
    Still still(makeFrame(FORMAT_NV21, kGeometry));
    std::vector<uint8_t> expected = still.frame.bytes;
    for (int row = 0; row < 199 / 2; ++row) {
        for (int pair = 0; pair < 151; ++pair) {
            uint8_t* const first = &expected.at(320 * 201 + 320 * row + 2 * pair);
            std::swap(first[0], first[1]);
        }
    }
    const LogCapture log;
    ASSERT_EQ(0, still.write());
    EXPECT_TRUE(still.frame.bytes == expected) << "ceil(width / 2) pairs of each chroma row, and nothing else";
    EXPECT_TRUE(log.has("D/QuillHeifWriter: [NV21 to NV12]width: 301, height: 199, stride: 320 X 201,start!!!"));
    EXPECT_TRUE(log.has("D/QuillHeifWriter: [NV21 to NV12] END!!!"));
}

// Where the stride is odd, the last pair of the last row reaches one byte too far.
TEST(WriterStill, Nv21SwapStaysInsideTheFrame) {
    constexpr uint8_t kGuard = 0x11;
    Still still(makeFrame(FORMAT_NV21, {65, 64, 65, 64}));
    still.frame.bytes.push_back(kGuard);
    still.write();
    EXPECT_EQ(kGuard, still.frame.bytes.back());
}

TEST(WriterStill, RotationTurnsTheImage) {
    for (const int rotation : {-90, 0, 90, 180, 270}) {
        const LogCapture log;
        CallLog::instance().start();
        Still still(makeFrame(FORMAT_NV12, kSmall), 90, rotation);
        EXPECT_THAT(CallLog::instance().of("ALooper::start"), ElementsAre("0 1 -16", "0 0 -16")) << "as fast as audio";
        ASSERT_EQ(0, still.write());
        const std::string line = "D/QuillHeifWriter: setting rotation: " + std::to_string(rotation);
        EXPECT_EQ(rotation >= 1, log.has(line)) << rotation;
        const std::vector<std::string> hints = CallLog::instance().of("MediaMuxer::setOrientationHint");
        EXPECT_EQ(rotation >= 1 ? std::vector{std::to_string(rotation)} : std::vector<std::string>{}, hints);
        const bool sideways = rotation == 90 || rotation == 270;
        const ReadStill read = readStill(still.file.path());
        EXPECT_EQ(sideways ? 200 : 300, read.shownWidth) << rotation;
        EXPECT_EQ(sideways ? 300 : 200, read.shownHeight) << rotation;
        if (rotation != 90) continue;
        for (int i = 0; i < 300 * 200; ++i) {  // clockwise: what was at the bottom is on the left
            const int was = still.frame.shown.y.at((199 - i % 200) * 300 + i / 200);
            EXPECT_NEAR(was, read.planes.y.at(i), 20) << i;
        }
    }
}

TEST(WriterStill, ExifPassesThroughByteForByte) {
    std::vector<uint8_t> block = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 4, 0, 0, 0};
    for (int i = 0; i < 3001; ++i) block.push_back(static_cast<uint8_t>(i * 7));  // IFD1 exists: nothing is added
    std::vector<uint8_t> framed = {0xFF, 0xE1, 0x0B, 0xCF};
    framed.insert(framed.end(), block.begin(), block.end());
    for (const std::vector<uint8_t>& exif : {block, framed}) {
        Still still(makeFrame(FORMAT_NV12, kSmall));
        ASSERT_EQ(0, still.write(exif));
        const ReadStill read = readStill(still.file.path(), false);
        ASSERT_EQ(1u, read.exif.size()) << read.error;
        EXPECT_TRUE(read.exif[0] == exif);
    }
    Still without(makeFrame(FORMAT_NV12, kSmall));
    ASSERT_EQ(0, without.write());
    EXPECT_TRUE(readStill(without.file.path(), false).exif.empty());
}

TEST(WriterStill, StepsAreLoggedInOrder) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    const LogCapture log;
    {
        Still still(makeFrame(FORMAT_NV12, kSmall));
        ASSERT_EQ(0, still.write());
        EXPECT_TRUE(log.waitFor("D/QuillHeifWriter: kWhatProcessInputFrameNotify done"));
    }
    std::vector<std::string> lines = log.of("QuillHeifWriter");
    // The caller's lines come in their own order beside the looper's.
    const auto takeOut = [&lines](const std::string& line) {
        const auto found = std::find(lines.begin(), lines.end(), line);
        const bool was = found != lines.end();
        if (was) lines.erase(found);
        return was;
    };
    EXPECT_TRUE(takeOut("D/Encode Finish: 1"));
    EXPECT_THAT(lines,
                ElementsAre("D/QuillHeifWriter()", "D/HeifEncoder Init Completed", "D/INPUT FRAME ADD (INPUTFRAME)",
                            "D/input frame size : 1", "D/kWhatProcessInputFrameNotify, inputFrames size 1",
                            "D/encoded output buffers size, 1", "D/muxer image item begin!",
                            "D/muxer image item end! size 1", "D/process Heif file finish",
                            "D/kWhatProcessInputFrameNotify done", "I/stop looper", "D/~QuillHeifWriter()"));
}

}  // namespace
