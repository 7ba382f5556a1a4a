// A writer whose encoder, muxer or caller lets it down, and the services beside the frame.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <media/stagefright/foundation/AMessage.h>

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
using quill::host::Fault;
using quill::host::Faults;
using testing::ElementsAre;

constexpr char kTag[] = "QuillHeifWriter";
constexpr char kNothingQueued[] = "D/QuillHeifWriter: kWhatProcessInputFrameNotify, inputFrames size 0";
constexpr int kAlways = 1 << 20;

CameraFrame smallFrame(InputColorFormat format = FORMAT_NV12) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    return makeFrame(format, {64, 64, 64, 64});
}

TEST(WriterFailure, RefusedInitialisationRefusesEveryFrameAndIsNotRetried) {
    // NO_INIT is also what a writer says before it is started at all.
    for (const auto& [call, status, line] :
         {std::tuple("MediaCodec::configure", INVALID_OPERATION, "E/HeifEncoder Init Failed"),
          {"MediaCodec::start", NO_INIT, "D/HeifEncoder Init Completed"}}) {
        const LogCapture log;
        Faults::instance().reset();
        Faults::instance().inject(call, Fault::failing(status));
        Still still(smallFrame());
        still.writer->start(64, 64, 64, 64, FORMAT_NV12, 95, 0);
        EXPECT_EQ(-1, still.write({1, 2, 3}));
        EXPECT_THAT(log.of(kTag), ElementsAre("D/QuillHeifWriter()", line, "E/HeifEncoder donot init or start Failed"));
        (new AMessage(0, still.writer))->post();
        EXPECT_TRUE(log.waitFor(kNothingQueued));
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

TEST(WriterFailure, MissingNv21PixelsAreReported) {
    const LogCapture log;
    Still still(smallFrame(FORMAT_NV21));
    Faults::instance().inject("MediaCodec::dequeueInputBuffer", Fault::failing(-38), 1, kAlways);
    Faults::instance().inject("MediaCodec::dequeueOutputBuffer", Fault::failing(-38), 1, kAlways);
    const FileCalls calls(hurryOnce([&] { return log.has(kLooperDone); }));
    EXPECT_EQ(-1, still.writer->processInputFrame(nullptr, nullptr, 0, still.file.fd()));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: Input Buffer is NULL!"));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: Encoder failed!")) << "encoding is attempted all the same";
    EXPECT_FALSE(log.has("D/QuillHeifWriter: [NV21 to NV12] END!!!"));
}

TEST(WriterFailure, ExifThatCannotBeCopiedIsRefused) {
    if (QUILL_EMULATOR[0] != '\0') GTEST_SKIP() << "qemu ignores a limit on memory, and there is always enough";
    const LogCapture log;
    Still still(smallFrame());
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // whose allocators have a limit of their own
    const rlimit oneGigabyte{1u << 30, 1u << 30};
    ASSERT_EQ(0, setrlimit(RLIMIT_AS, &oneGigabyte));
#endif
    uint8_t* const pixels = still.frame.bytes.data();
    EXPECT_EQ(-1, still.writer->processInputFrame(pixels, pixels, 0xFFFFFFFF, still.file.fd()));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: inputFrame.exifData malloc fail"));
    (new AMessage(0, still.writer))->post();
    EXPECT_TRUE(log.waitFor(kNothingQueued));
}

int gFinished = 0;

// A start after the first, a message of another code and questions of no frame change nothing.
TEST(WriterServices, FinishedFrameIsToldOnceAndHasAnEmptyResultInMemory) {
    const LogCapture log;
    Still still(smallFrame());
    still.writer->start(1, 1, 1, 1, FORMAT_RGBA8888, 1, 90);
    (new AMessage(99, still.writer))->post();
    EXPECT_TRUE(log.waitFor("E/QuillHeifWriter: shouldn't be here"));
    still.writer->setCallback([](int what, void* data, unsigned size) {
        if (what == 0 && data == nullptr && size == 0) ++gFinished;
    });
    still.writer->addExifData(nullptr, 3);
    uint8_t* data = nullptr;
    uint32_t size = 7;
    EXPECT_FALSE(still.writer->getEncData(&data, &size));
    EXPECT_EQ(7u, size);
    ASSERT_EQ(0, still.write());
    EXPECT_EQ(1, gFinished) << "before the caller is released";
    EXPECT_EQ(64, readStill(still.file.path(), false).shownWidth);
    EXPECT_EQ(1, log.count("D/QuillHeifWriter: HeifEncoder Init Completed"));
    EXPECT_FALSE(still.writer->getEncData(nullptr, &size));
    EXPECT_FALSE(still.writer->getEncData(&data, nullptr));
    EXPECT_TRUE(still.writer->getEncData(&data, &size));
    EXPECT_EQ(0u, size);
    EXPECT_NE(nullptr, data);
    delete[] data;
    EXPECT_TRUE(log.waitFor(kLooperDone));
    EXPECT_EQ(1, log.count(kLooperDone)) << "for the frame's message only";
}

TEST(WriterServices, BufferIsDumpedToAFile) {
    const LogCapture log;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const TemporaryFile file;
    writer->saveBuffer("photo", 5, file.path().c_str());
    EXPECT_THAT(file.bytes(), ElementsAre('p', 'h', 'o', 't', 'o'));
    writer->saveBuffer("photo", 5, "/nowhere/at/all");
    EXPECT_EQ("E/QuillHeifWriter: saveBuffer error", log.lines().back());
}

}  // namespace
