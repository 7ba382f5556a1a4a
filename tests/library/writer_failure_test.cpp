// A writer whose encoder, muxer or caller lets it down, and the services beside the frame.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <atomic>

#include <media/stagefright/foundation/AMessage.h>

#include "Clock.h"
#include "Faults.h"
#include "support/FileCalls.h"
#include "support/HeifReader.h"
#include "support/LogCapture.h"
#include "support/Photograph.h"
#include "support/Still.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;
using testing::ElementsAre;

constexpr char kTag[] = "QuillHeifWriter";
constexpr Geometry kSmall{64, 64, 64, 64};
constexpr int kAlways = 1 << 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

std::atomic<int> gFinished{0};

void onFinished(int what, void* data, unsigned int size) {
    if (what == 0 && data == nullptr && size == 0) ++gFinished;
}

CameraFrame smallFrame(InputColorFormat format = FORMAT_NV12) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    return makeFrame(format, kSmall);
}

TEST(WriterFailure, RefusedInitialisationRefusesEveryFrameAndIsNotRetried) {
    constexpr char kFailed[] = "E/HeifEncoder Init Failed", kCompleted[] = "D/HeifEncoder Init Completed";
    const struct {
        const char* call;
        int status;
        const char* line;
    } kCases[] = {
            {"MediaCodec::configure", -38, kFailed},
            {"MediaCodec::CreateByComponentName", -38, kFailed},
            {"MediaCodec::start", -38, kCompleted},
            {"MediaCodec::start", -19, kCompleted},  // also what a writer says before it is started at all
    };
    for (const auto& test : kCases) {
        const LogCapture log;
        Faults::instance().reset();
        Faults::instance().inject(test.call, Fault::failing(test.status));
        Still still(smallFrame());
        still.writer->start(64, 64, 64, 64, FORMAT_NV12, 95, 0);
        EXPECT_EQ(-1, still.write({1, 2, 3}));
        EXPECT_THAT(log.of(kTag),
                    ElementsAre("D/QuillHeifWriter()", test.line, "E/HeifEncoder donot init or start Failed"));
        (new AMessage(0, still.writer))->post();
        EXPECT_TRUE(log.waitFor(kLooperDone));
        EXPECT_TRUE(log.has("D/QuillHeifWriter: kWhatProcessInputFrameNotify, inputFrames size 0")) << "nothing queued";
    }
}

TEST(WriterFailure, SizesThatCannotBeAreRefused) {
    for (const Geometry& g : {Geometry{0, 64, 64, 64},
                              {-1, 64, 64, 64},
                              {65, 64, 64, 64},
                              {64, 65, 64, 64},
                              {64, 64, 23171, 23171},
                              {64, 64, 1 << 30, 64}}) {
        const sp<QuillHeifWriter> writer = new QuillHeifWriter;
        EXPECT_EQ(BAD_VALUE, writer->initEncoder(g.width, g.height, g.stride, g.sliceHeight, FORMAT_NV12, 95, 0));
        EXPECT_EQ(-1, writer->processInputFrame(nullptr, nullptr, 0, 1)) << g.stride;
    }
}

TEST(WriterFailure, SecondStartLeavesTheEncoder) {
    const LogCapture log;
    Still still(smallFrame());
    still.writer->start(1, 1, 1, 1, FORMAT_RGBA8888, 1, 90);
    EXPECT_EQ(1, log.count("D/QuillHeifWriter: HeifEncoder Init Completed"));
    ASSERT_EQ(0, still.write());
    EXPECT_EQ(64, readStill(still.file.path(), false).shownWidth);
}

TEST(WriterFailure, MissingNv21PixelsAreReported) {
    const LogCapture log;
    Still still(smallFrame(FORMAT_NV21));
    Faults::instance().inject("MediaCodec::dequeueInputBuffer", Fault::failing(-38), 1, kAlways);
    Faults::instance().inject("MediaCodec::dequeueOutputBuffer", Fault::failing(-38), 1, kAlways);
    {
        const FileCalls calls(hurryOnce([&] { return log.has(kLooperDone); }));
        EXPECT_EQ(-1, still.writer->processInputFrame(nullptr, nullptr, 0, still.file.fd()));
    }
    Clock::instance().setScale(1);
    EXPECT_TRUE(log.has("E/QuillHeifWriter: Input Buffer is NULL!"));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: Encoder failed!")) << "encoding is attempted all the same";
    EXPECT_FALSE(log.has("D/QuillHeifWriter: [NV21 to NV12] END!!!"));
}

TEST(WriterFailure, ExifThatCannotBeCopiedIsRefused) {
    if (QUILL_EMULATOR[0] != '\0') GTEST_SKIP() << "qemu ignores a limit on memory, and there is always enough";
    const LogCapture log;
    Still still(smallFrame());
    const rlimit oneGigabyte{1u << 30, 1u << 30};
    if (!kSanitized) {  // a sanitizer's allocator has a limit of its own, given by its options
        ASSERT_EQ(0, setrlimit(RLIMIT_AS, &oneGigabyte));
    }
    EXPECT_EQ(-1, still.writer->processInputFrame(still.frame.bytes.data(), still.frame.bytes.data(), 0xFFFFFFFF,
                                                  still.file.fd()));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: inputFrame.exifData malloc fail"));
    (new AMessage(0, still.writer))->post();
    EXPECT_TRUE(log.waitFor("D/QuillHeifWriter: kWhatProcessInputFrameNotify, inputFrames size 0"));
}

TEST(WriterMessages, OtherCodesOnlySaySo) {
    const LogCapture log;
    Still still(smallFrame());
    (new AMessage(99, still.writer))->post();
    EXPECT_TRUE(log.waitFor("E/QuillHeifWriter: shouldn't be here"));
    EXPECT_EQ("E/QuillHeifWriter: shouldn't be here", log.lines().back());
    EXPECT_FALSE(log.has(kLooperDone));
}

TEST(WriterMessages, CallbackComesOnceAFileIsFinished) {
    Still still(smallFrame());
    still.writer->setCallback(onFinished);
    ASSERT_EQ(0, still.write());
    EXPECT_EQ(1, gFinished) << "before the caller is released";
}

TEST(WriterServices, MemoryResultIsEmptyOnceAFrameIsDone) {
    const LogCapture log;
    Still still(smallFrame());
    uint8_t* data = nullptr;
    uint32_t size = 7;
    EXPECT_FALSE(still.writer->getEncData(&data, &size));
    EXPECT_EQ(7u, size);
    ASSERT_EQ(0, still.write());
    EXPECT_FALSE(still.writer->getEncData(nullptr, &size));
    EXPECT_FALSE(still.writer->getEncData(&data, nullptr));
    EXPECT_TRUE(still.writer->getEncData(&data, &size));
    EXPECT_EQ(0u, size);
    EXPECT_NE(nullptr, data);
    delete[] data;
    EXPECT_TRUE(log.has("I/QuillHeifWriter: Get encoded size 0"));
}

TEST(WriterServices, BufferIsDumpedToAFile) {
    const LogCapture log;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const TemporaryFile file;
    writer->saveBuffer("photo", 5, file.path().c_str());
    EXPECT_THAT(file.bytes(), ElementsAre('p', 'h', 'o', 't', 'o'));
    writer->saveBuffer("photo", 5, "/nowhere/at/all");
    EXPECT_EQ("E/QuillHeifWriter: saveBuffer error", log.lines().back());
    writer->addExifData(nullptr, 3);
}

}  // namespace
