// The thumbnail in a still's EXIF block, which the caller's thread replaces while the looper may be muxing it.
#include <gmock/gmock.h>
#include <malloc.h>

#include <thread>

#include "ExifBlock.h"
#include "Faults.h"
#include "support/FileCalls.h"
#include "support/HeifReader.h"
#include "support/JpegReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"
#include "support/Waiting.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Fault;
using quill::host::Faults;
using Bytes = std::vector<uint8_t>;

constexpr char kFast[] = "debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast";
constexpr uint32_t kHeader = 6;
constexpr Geometry kSmall{64, 64, 64, 64};
Bytes gBlock = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3};

/** The block that a still is to have once its frame, as the writer leaves it, has given the thumbnail. */
Bytes expectedBlock(Still& still) {
    Bytes nv12(nv12Bytes(still.frame.geometry)), jpeg(still.writer->thumbnailCapacity());
    still.writer->saveYuvBuf(still.frame.bytes.data(), nv12.data());
    jpeg.resize(static_cast<size_t>(still.writer->creatThmb(nv12.data(), jpeg.data())));
    Bytes out(gBlock.size() + kThumbnailDirectorySize + jpeg.size());
    appendThumbnailDirectory({gBlock.data(), gBlock.size()}, kHeader, {jpeg.data(), jpeg.size()}, out.data());
    return out;
}

Bytes exifOf(const Still& still) {
    const ReadStill read = readStill(still.file.path(), false);
    EXPECT_EQ("", read.error);
    EXPECT_EQ(1u, read.exif.size());
    return read.exif.empty() ? Bytes() : read.exif[0];
}

TEST(WriterThumbnail, EveryFormatGetsOne) {
    setProperties(kFast);
    mallopt(M_PERTURB, 0x5A);  // so that a byte left as it was in the heap differs
    for (const InputColorFormat format : {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21}) {
        Still still(makeFrame(format, {300, 200, 320, 208}));
        const LogCapture log;
        Faults::instance().reset();
        Faults::instance().inject("MediaMuxer::start", Fault::stalling());
        {
            const FileCalls calls([&] {  // the first poll behind the line comes after the block is replaced
                const std::vector<std::string> lines = log.of("QuillHeifWriter");
                if (testing::Value(lines, testing::Contains(testing::StartsWith("D/newExif size:"))))
                    Faults::instance().release();
            });
            ASSERT_EQ(0, still.write(gBlock));
        }
        const Bytes expected = expectedBlock(still);
        EXPECT_TRUE(expected == exifOf(still)) << format;
        EXPECT_TRUE(log.has("D/QuillHeifWriter: newExif size:" + std::to_string(expected.size()) +
                            ",oldExif size:" + std::to_string(gBlock.size())));
        const ReadJpeg jpeg = readJpeg({expected.begin() + gBlock.size() + kThumbnailDirectorySize, expected.end()});
        EXPECT_TRUE(jpeg.baseline420);
        EXPECT_EQ(170, jpeg.height);
    }
}

TEST(WriterThumbnail, ImpossibleOnesLeaveThePhotographAndItsExif) {
    setProperties(kFast);
    for (const Geometry& geometry : {Geometry{600, 2, 600, 2}, Geometry{2, 600, 2, 600}}) {
        const LogCapture log;
        Still still(makeFrame(FORMAT_NV12, geometry));
        ASSERT_EQ(0, still.write(gBlock)) << geometry.width;
        EXPECT_TRUE(log.has("E/QuillHeifWriter: CreatThmb fail"));
        EXPECT_EQ(gBlock, exifOf(still));
    }
}

TEST(WriterThumbnail, BlockIsReplacedUntilTheMuxerTakesIt) {
    setProperties(std::string(kFast) + ",debug.heif.exif.thmb=1");  // the writer's own replacement stays away
    for (const auto& [call, isInTime] : {std::pair("MediaCodec::dequeueOutputBuffer", true),
                                         {"MediaMuxer::start", true},
                                         {"MediaMuxer::writeSampleData", false},
                                         {"MediaMuxer::stop", false}}) {
        const LogCapture log;
        Still still(makeFrame(FORMAT_NV12, kSmall));
        const auto replace = [&] {
            still.writer->changeExif(still.frame.bytes.data(), gBlock.data(), static_cast<uint32_t>(gBlock.size()),
                                     kHeader);
        };
        replace();
        EXPECT_EQ(1, log.count("E/QuillHeifWriter: change exif fail")) << "there is no frame yet";
        Faults::instance().reset();
        Faults::instance().inject(call, Fault::stalling());
        int32_t result = -1;
        std::thread caller([&] { result = still.write(gBlock); });
        EXPECT_TRUE(comesTrue([name = call] { return Faults::instance().occurrences()[name] > 0; }));
        replace();
        Faults::instance().release();
        caller.join();
        EXPECT_EQ(0, result);
        EXPECT_EQ(isInTime ? expectedBlock(still) : gBlock, exifOf(still)) << call;
        EXPECT_EQ(isInTime ? 1 : 2, log.count("E/QuillHeifWriter: change exif fail")) << "lost, but not silently";
    }
}

}  // namespace
