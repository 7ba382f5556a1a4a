// One frame through the codec: what is fed, what is collected, and what is said when the codec misbehaves.
#include <gmock/gmock.h>

#include <random>
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
using quill::host::CallLog;
using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;
using testing::Each;
using testing::ElementsAre;

constexpr char kTag[] = "QuillHeifEncoder";
constexpr char kDequeueOutput[] = "MediaCodec::dequeueOutputBuffer";
constexpr int kAlways = 1 << 20;
constexpr Geometry kSmall{300, 200, 300, 200};
constexpr Geometry kFourTiles{1000, 700, 1024, 704};

/** A started encoder that logs errors only, and its frame. */
struct Encoding {
    explicit Encoding(InputColorFormat format, const Geometry& geometry = kSmall, const char* verbosity = "0")
            : frame(makeFrame(format, geometry)) {
        setProperties(std::string("debug.quill.host.x265.preset=ultrafast,debug.quill.video.log.enable=") + verbosity);
        encoder = new QuillHeifEncoder(geometry.width, geometry.height, geometry.stride, geometry.sliceHeight, format,
                                       90);
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
    Encoding coding(FORMAT_NV12, kFourTiles);
    CallLog::instance().start();
    EXPECT_EQ(OK, coding.encode());
    EXPECT_EQ(4u, coding.out.size());
    std::vector<std::string> queued;
    for (const std::string& call : CallLog::instance().of("MediaCodec::queueInputBuffer")) {
        queued.push_back(call.substr(call.find(' ') + 1));  // whichever buffer was free
    }
    EXPECT_THAT(queued, ElementsAre("0 393216 132 0", "0 393216 250132 0", "0 393216 500132 0", "0 393216 750132 0"));
    EXPECT_THAT(CallLog::instance().of("MediaCodec::dequeueInputBuffer"), Each("0"));
    EXPECT_THAT(CallLog::instance().of(kDequeueOutput), Each("10000"));
    EXPECT_THAT(coding.log.of(kTag), ElementsAre("E/encode heif (err 0(NO_ERROR))"));
}

// A buffer comes back with the tile that it carried last. What an edge tile leaves of that would be coded again.
TEST(EncoderFrame, EdgeTilesAreEmptyBesideThePicture) {
    Encoding coding(FORMAT_NV12, {1040, 2064, 1040, 2064});  // 16 columns and rows in the last tiles
    std::minstd_rand random(1);
    for (size_t i = 0; i < coding.frame.bytes.size(); ++i) {
        const size_t row = i / 1040;
        const bool inWholeTile = i % 1040 < 1024 && row < 2048;
        coding.frame.bytes[i] = inWholeTile ? static_cast<uint8_t>(random() >> 8) : 0;
    }
    ASSERT_EQ(OK, coding.encode());
    for (size_t tile = 0; tile < 15; ++tile) {
        const bool isWhole = tile % 3 < 2 && tile < 12;
        EXPECT_EQ(isWhole, coding.out.at(tile)->size() > 20000) << tile;
    }
}

TEST(EncoderFrame, BufferOfAFailedCopyIsGivenBack) {
    Encoding coding(FORMAT_NV12);
    Faults::instance().inject("MediaCodec::getOutputBuffer", Fault::nullBuffer(), 2);
    EXPECT_EQ(NO_MEMORY, coding.encode());
    EXPECT_EQ(2, coding.calls("MediaCodec::releaseOutputBuffer"));
}

TEST(EncoderFrame, CodedTilesAreCopiesOfPicturesOnly) {
    Encoding coding(FORMAT_NV12, kFourTiles, "5");
    EXPECT_EQ(OK, coding.encode());
    EXPECT_EQ(5, coding.calls("MediaCodec::releaseOutputBuffer")) << "the parameter sets are given back, not kept";
    for (const sp<ABuffer>& tile : coding.out) {
        ASSERT_GT(tile->size(), 5u);
        EXPECT_THAT(std::vector<uint8_t>(tile->data(), tile->data() + 4), ElementsAre(0, 0, 0, 1));
        EXPECT_LT(tile->data()[4] >> 1, 32) << "a slice, not a parameter set";
    }
    EXPECT_EQ(1, coding.log.count("D/QuillHeifEncoder: Received format change"));
}

TEST(EncoderFrame, TrackFormatIsThatOfTheWholeImage) {
    for (const auto& [geometry, grid] : {std::pair(kFourTiles, true), std::pair(kSmall, false)}) {
        Encoding coding(FORMAT_NV12, geometry);
        ASSERT_EQ(OK, coding.encode());
        const sp<AMessage> format = coding.encoder->getFormat();
        AString mime;
        int32_t value = 0;
        EXPECT_TRUE(format->findString("mime", &mime));
        EXPECT_STREQ("image/vnd.android.heic", mime.c_str());
        EXPECT_TRUE(format->findInt32("width", &value) && value == geometry.width);
        EXPECT_TRUE(format->findInt32("height", &value) && value == geometry.height);
        for (const auto& [key, wanted] : {std::pair("tile-width", 512), std::pair("tile-height", 512),
                                          std::pair("grid-cols", 2), std::pair("grid-rows", 2)}) {
            EXPECT_EQ(grid, format->findInt32(key, &value)) << key;
            EXPECT_TRUE(!grid || value == wanted) << key;
        }
        sp<ABuffer> parameterSets;
        EXPECT_TRUE(format->findBuffer("csd-0", &parameterSets));
        format->setInt32("width", 1);
        format->setInt32("grid-cols", 9);
        EXPECT_EQ(format, coding.encoder->getFormat());
        EXPECT_TRUE(format->findInt32("width", &value) && value == geometry.width);
        EXPECT_TRUE(format->findInt32("grid-cols", &value) && value == 9) << "only the size is set in an image format";
    }
}

TEST(EncoderFrame, RetryBudgetIsOneFrames) {
    Encoding enough(FORMAT_NV12, kSmall, "5");
    fail(kDequeueOutput, -11, 1, 700);
    fail(kDequeueOutput, -11, 702, 799);  // the format change in between refills nothing
    Clock::instance().setScale(1000);     // no wait of the codec's own runs out
    EXPECT_EQ(OK, enough.encode());
    EXPECT_EQ(1, enough.log.count("D/QuillHeifEncoder: Timed-out waiting for output.. retries left = 1499"));
    EXPECT_EQ(1, enough.log.count("D/QuillHeifEncoder: Timed-out waiting for output.. retries left = 1"));

    Clock::instance().setScale(1);
    Faults::instance().reset();
    Encoding spent(FORMAT_NV12);
    fail(kDequeueOutput, -11, 1, kAlways);
    EXPECT_EQ(-11, spent.encode());
    EXPECT_EQ(1500, spent.calls(kDequeueOutput));
    EXPECT_THAT(spent.log.of(kTag), ElementsAre("W/Received error -11 (WOULD_BLOCK) instead of output",
                                                "E/encode heif (err -11(WOULD_BLOCK))"));
}

TEST(EncoderFrame, NewsOfTheCodecIsNotOutput) {
    Encoding coding(FORMAT_NV12, kSmall, "5");
    fail(kDequeueOutput, -1014, 1, 2);
    Faults::instance().inject(kDequeueOutput, Fault::formatChange(), 3);
    EXPECT_EQ(OK, coding.encode());
    EXPECT_EQ(2, coding.log.count("D/QuillHeifEncoder: Output buffers changed"));
    EXPECT_EQ(2, coding.log.count("D/QuillHeifEncoder: Received format change"));
}

TEST(EncoderFrame, FailedQueueStopsNoOtherTile) {
    Encoding coding(FORMAT_NV12, kFourTiles);
    fail("MediaCodec::queueInputBuffer", -12, 1);
    EXPECT_EQ(OK, coding.encoder->queueInputDataToByteBuffer(coding.frame.bytes.data(), 1500))
            << "the last one's status";
    EXPECT_EQ(4, coding.calls("MediaCodec::queueInputBuffer"));
}

}  // namespace
