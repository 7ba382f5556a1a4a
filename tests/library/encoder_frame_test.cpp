// One frame through the codec: what is fed, what is collected, and what is said when the codec misbehaves.
#include <gmock/gmock.h>

#include <random>

#include <media/stagefright/MediaErrors.h>

#include "CallLog.h"
#include "Clock.h"
#include "Faults.h"
#include "QuillHeifEncoder.h"
#include "support/CameraFrames.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using namespace quill::host;
using testing::ElementsAre;

constexpr char kDequeueOutput[] = "MediaCodec::dequeueOutputBuffer";
constexpr Geometry kSmall{300, 200, 300, 200}, kSixTiles{1000, 1100, 1024, 1104};

/** A started encoder that logs errors only, and its frame. */
struct Encoding {
    explicit Encoding(const Geometry& geometry = kSmall, const char* verbosity = "0", const char* engine = "free")
            : frame(makeFrame(FORMAT_NV12, geometry)) {
        setProperties(std::string("debug.quill.host.encoder=") + engine +
                      ",debug.quill.host.x265.preset=ultrafast,debug.quill.video.log.enable=" + verbosity);
        encoder = new QuillHeifEncoder(geometry.width, geometry.height, geometry.stride, geometry.sliceHeight,
                                       FORMAT_NV12, 90);
        EXPECT_EQ(OK, encoder->initializeCodec());
        EXPECT_EQ(OK, encoder->start());
    }
    ~Encoding() { encoder->close(); }

    status_t encode() { return encoder->addYuvBuffer(frame.bytes.data(), out); }
    int calls(const char* call) const { return Faults::instance().occurrences()[call]; }

    CameraFrame frame;
    sp<QuillHeifEncoder> encoder;
    std::vector<sp<ABuffer>> out;
    LogCapture log;
};

void fail(const char* call, status_t status, int first = 1, int count = 1) {
    Faults::instance().inject(call, Fault::failing(status), first, count);
}

TEST(EncoderFrame, EveryTileIsQueuedOnceWithItsTime) {
    Encoding coding(kSixTiles);
    CallLog::instance().start();
    EXPECT_EQ(OK, coding.encode());
    std::vector<std::string> queued;
    for (const std::string& call : CallLog::instance().of("MediaCodec::queueInputBuffer")) {
        queued.push_back(call.substr(call.find(' ') + 1));  // whichever buffer was free
    }
    EXPECT_THAT(queued, ElementsAre("0 393216 132 0", "0 393216 166798 0", "0 393216 333465 0", "0 393216 500132 0",
                                    "0 393216 666798 0", "0 393216 833465 0"));
    EXPECT_THAT(CallLog::instance().of("MediaCodec::dequeueInputBuffer"), testing::Each("0"));
    EXPECT_THAT(CallLog::instance().of(kDequeueOutput), testing::Each("10000"));
    EXPECT_EQ(6u, coding.out.size());
    EXPECT_EQ(7, coding.calls("MediaCodec::releaseOutputBuffer")) << "the parameter sets are given back, not kept";
    EXPECT_THAT(coding.log.of("QuillHeifEncoder"), ElementsAre("E/encode heif (err 0(NO_ERROR))"));
}

// A buffer comes back with the tile that it carried last. What an edge tile leaves of that would be coded again.
TEST(EncoderFrame, EdgeTilesAreEmptyBesideThePicture) {
    Encoding coding({1040, 2064, 1040, 2064}, "0", "x265");  // 16 columns and rows in the last tiles
    std::minstd_rand random(1);
    for (size_t i = 0; i < coding.frame.bytes.size(); ++i) {
        const bool inWholeTile = i % 1040 < 1024 && i / 1040 < 2048;
        coding.frame.bytes[i] = inWholeTile ? static_cast<uint8_t>(random() >> 8) : 0;
    }
    ASSERT_EQ(OK, coding.encode());
    for (size_t tile = 0; tile < 15; ++tile) {
        EXPECT_EQ(tile % 3 < 2 && tile<12, coding.out.at(tile)->size()> 20000) << tile;
    }
}

TEST(EncoderFrame, BufferOfAFailedCopyIsGivenBack) {
    Encoding coding;
    Faults::instance().inject("MediaCodec::getOutputBuffer", Fault::nullBuffer(), 2);
    EXPECT_EQ(NO_MEMORY, coding.encode());
    EXPECT_EQ(2, coding.calls("MediaCodec::releaseOutputBuffer"));
    EXPECT_EQ(1000132, coding.encoder->computePresentationTime(0)) << "a failed frame counts as one";
}

TEST(EncoderFrame, TrackFormatIsThatOfTheWholeImage) {
    for (const auto& [geometry, expected] :
         {std::pair(kSixTiles, "1000 1100 512 512 2 3"), {kSmall, "300 200 - - - -"}}) {
        Encoding coding(geometry);
        ASSERT_EQ(OK, coding.encode());
        const sp<AMessage> format = coding.encoder->getFormat();
        AString mime;
        EXPECT_TRUE(format->findString("mime", &mime) && mime == "image/vnd.android.heic");
        int32_t value = 0;
        std::string values;
        for (const char* key : {"width", "height", "tile-width", "tile-height", "grid-cols", "grid-rows"}) {
            values += (values.empty() ? "" : " ") + (format->findInt32(key, &value) ? std::to_string(value) : "-");
        }
        EXPECT_EQ(expected, values);
        format->setInt32("width", 1);
        format->setInt32("grid-cols", 9);
        EXPECT_EQ(format, coding.encoder->getFormat());
        EXPECT_TRUE(format->findInt32("width", &value) && value == geometry.width);
        EXPECT_TRUE(format->findInt32("grid-cols", &value) && value == 9) << "only the size is set in an image format";
    }
}

TEST(EncoderFrame, RetryBudgetIsOneFramesAndNewsCostNone) {
    Encoding coding(kSmall, "5");
    fail(kDequeueOutput, WOULD_BLOCK, 1, 700);
    fail(kDequeueOutput, WOULD_BLOCK, 702, 799);  // the format change in between refills nothing
    fail(kDequeueOutput, INFO_OUTPUT_BUFFERS_CHANGED, 1501);
    Clock::instance().setScale(1000);  // no wait of the codec's own runs out
    EXPECT_EQ(OK, coding.encode());
    for (const char* const line :
         {"Timed-out waiting for output.. retries left = 1499", "Timed-out waiting for output.. retries left = 1",
          "Received format change", "Output buffers changed"}) {
        EXPECT_EQ(1, coding.log.count(std::string("D/QuillHeifEncoder: ") + line)) << line;
    }
}

TEST(EncoderFrame, FailedQueueStopsNoOtherTile) {
    Encoding coding({1000, 700, 1024, 704});
    fail("MediaCodec::queueInputBuffer", NO_MEMORY);
    EXPECT_EQ(OK, coding.encoder->queueInputDataToByteBuffer(coding.frame.bytes.data(), 1500)) << "the last one's";
    EXPECT_EQ(4, coding.calls("MediaCodec::queueInputBuffer"));
}

}  // namespace
