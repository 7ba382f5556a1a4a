// The thumbnail in a still's EXIF block, which the caller's thread replaces while the looper may be muxing it.
#include <gmock/gmock.h>
#include <malloc.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <set>
#include <thread>

#include <android/log.h>

#include "Clock.h"
#include "ExifBlock.h"
#include "Faults.h"
#include "support/HeifReader.h"
#include "support/JpegReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"
#include "support/Waiting.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;
using Bytes = std::vector<uint8_t>;

constexpr char kFast[] = "debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast";
constexpr char kNoThumbnail[] = "E/QuillHeifWriter: CreatThmb fail";
constexpr uint32_t kHeader = 6;
const Bytes kBlock = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};

std::set<useconds_t> gPolls;  // how long the caller has slept at a time

/** What runs at every poll of a caller that waits for its frame. */
std::function<void()>& onPoll() {
    static std::function<void()> action;
    return action;
}

}  // namespace

// Found ahead of the stand-in's: the poll that a caller's thread goes back to is the one sign that it is done with the
// EXIF block.
extern "C" int usleep(useconds_t microseconds) {
    if (onPoll()) {
        gPolls.insert(microseconds);
        onPoll()();
    }
    Clock::instance().sleepUs(microseconds);
    return 0;
}

namespace {

/** The block that a still is to have once its frame, as the writer leaves it, has given the thumbnail. */
Bytes expectedBlock(Still& still, const Bytes& block) {
    const Geometry& g = still.frame.geometry;
    Bytes nv12(nv12Bytes(g)), jpeg(still.writer->thumbnailCapacity());
    still.writer->saveYuvBuf(still.frame.bytes.data(), nv12.data());
    jpeg.resize(static_cast<size_t>(still.writer->creatThmb(nv12.data(), jpeg.data())));
    Bytes out(block.size() + kThumbnailDirectorySize + jpeg.size());
    appendThumbnailDirectory({block.data(), block.size()}, kHeader, {jpeg.data(), jpeg.size()}, out.data());
    return out;
}

Bytes exifOf(const Still& still) {
    const ReadStill read = readStill(still.file.path(), false);
    EXPECT_EQ("", read.error);
    EXPECT_EQ(1u, read.exif.size());
    return read.exif.empty() ? Bytes() : read.exif[0];
}

bool sized(const LogCapture& log) {
    for (const std::string& line : log.of("QuillHeifWriter")) {
        if (line.rfind("D/newExif size:", 0) == 0) return true;
    }
    return false;
}

TEST(WriterThumbnail, EveryFormatGetsOne) {
    setProperties(kFast);
    mallopt(M_PERTURB, 0x5A);  // so that a byte left as it was in the heap differs
    for (const InputColorFormat format : {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21}) {
        Still still(makeFrame(format, {300, 200, 320, 208}));
        const LogCapture log;
        Faults::instance().reset();
        Faults::instance().inject("MediaMuxer::start", Fault::stalling());
        onPoll() = [&log] {  // the first poll behind the line comes after the swap
            if (sized(log)) Faults::instance().release();
        };
        const int32_t result = still.write(kBlock);
        onPoll() = nullptr;
        Faults::instance().release();
        ASSERT_EQ(0, result);
        EXPECT_THAT(gPolls, testing::ElementsAre(2000)) << "microseconds";
        const Bytes expected = expectedBlock(still, kBlock);
        EXPECT_TRUE(expected == exifOf(still)) << format;
        EXPECT_TRUE(log.has("D/QuillHeifWriter: newExif size:" + std::to_string(expected.size()) +
                            ",oldExif size:" + std::to_string(kBlock.size())));
        const ReadJpeg jpeg = readJpeg({expected.begin() + kBlock.size() + kThumbnailDirectorySize, expected.end()});
        EXPECT_TRUE(jpeg.baseline420);
        EXPECT_EQ(170, jpeg.height);
    }
}

TEST(WriterThumbnail, ImpossibleOnesLeaveThePhotographAndItsExif) {
    setProperties(kFast);
    for (const Geometry& geometry : {Geometry{600, 2, 600, 2}, Geometry{2, 600, 2, 600}}) {
        const LogCapture log;
        Still still(makeFrame(FORMAT_NV12, geometry));
        ASSERT_EQ(0, still.write(kBlock)) << geometry.width;
        EXPECT_TRUE(log.has(kNoThumbnail));
        EXPECT_FALSE(sized(log));
        EXPECT_EQ(kBlock, exifOf(still));
    }
}

TEST(WriterThumbnail, NoFrameToPutItInIsReported) {
    Still still(makeFrame(FORMAT_NV12, {64, 64, 64, 64}));
    Bytes block = kBlock;
    const LogCapture log;
    still.writer->changeExif(still.frame.bytes.data(), block.data(), static_cast<uint32_t>(block.size()), kHeader);
    EXPECT_TRUE(log.has("E/QuillHeifWriter: change exif fail"));
}

/** The block that a still gets when the caller replaces it while the looper stands in `call`. */
std::pair<Bytes, Bytes> replaceDuring(const char* call) {
    setProperties(std::string(kFast) + ",debug.heif.exif.thmb=1");  // the writer's own replacement stays away
    Faults::instance().reset();
    Faults::instance().inject(call, Fault::stalling());
    Still still(makeFrame(FORMAT_NV12, {64, 64, 64, 64}));
    int32_t result = -1;
    std::thread caller([&] { result = still.write(kBlock); });
    EXPECT_TRUE(comesTrue([&] { return Faults::instance().occurrences()[call] > 0; }));
    Bytes block = kBlock;
    still.writer->changeExif(still.frame.bytes.data(), block.data(), static_cast<uint32_t>(block.size()), kHeader);
    Faults::instance().release();
    caller.join();
    EXPECT_EQ(0, result);
    return {exifOf(still), expectedBlock(still, kBlock)};
}

TEST(WriterThumbnail, BlockIsReplacedUntilTheMuxerTakesIt) {
    for (const char* const call : {"MediaCodec::dequeueOutputBuffer", "MediaMuxer::start"}) {
        const auto [written, replaced] = replaceDuring(call);
        EXPECT_TRUE(written == replaced) << call;
    }
    for (const char* const call : {"MediaMuxer::writeSampleData", "MediaMuxer::stop"}) {
        EXPECT_EQ(kBlock, replaceDuring(call).first) << call;
    }
}

std::atomic<bool> gMuxed{false}, gReported{false};

// The caller's thread stands in its own log line until the looper has muxed.
TEST(WriterThumbnail, LateOneIsDropped) {
    setProperties(kFast);
    gMuxed = false;
    Still still(makeFrame(FORMAT_NV12, {64, 64, 64, 64}));
    __android_log_set_logger([](const __android_logger_data*, const char* line) {
        if (strcmp(line, "process Heif file finish") == 0) gMuxed = true;
        if (strcmp(line, "change exif fail") == 0) gReported = true;
        if (strncmp(line, "newExif size", 12) == 0) comesTrue([] { return gMuxed.load(); });
    });
    EXPECT_EQ(0, still.write(kBlock));
    EXPECT_TRUE(gMuxed);
    EXPECT_TRUE(gReported) << "lost, but not silently";
    EXPECT_EQ(kBlock, exifOf(still));
}

}  // namespace
