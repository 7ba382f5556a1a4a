// Live photos with their stills, and the packet that tells of the video. The boxes are held by digests, and by the
// fault matrix where the kernel does less than it is asked for.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

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
using Bytes = std::vector<uint8_t>;

constexpr char kTag[] = "QuillHeifWriter";
constexpr char kPacket[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";

Bytes counted(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i + i / 251);
    return bytes;
}

/** A file to be appended, left at its end. */
struct Source : TemporaryFile {
    explicit Source(const Bytes& bytes) {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(fd(), bytes.data(), bytes.size()));
    }
    /** Of zeros that take no room on the disk. */
    explicit Source(int64_t size) { EXPECT_EQ(0, ftruncate(fd(), size)); }
};

TEST(LivePhotoBoxes, LargeVideoIsCopiedInConstantMemory) {
    constexpr int64_t kVideo = 300 * 1000 * 1000;
    const Source video(kVideo);
    const TemporaryFile file;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(0, writer->addMotionPhoto(video.fd(), -1, file.fd(), nullptr, 0));
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(kVideo + 8, lseek(file.fd(), 0, SEEK_END));
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, kVideo / 1000 / 30) << "kB";  // a sanitizer keeps books of its own
}

TEST(LivePhotoBoxes, SizeThatIsNoneIsRefused) {
    constexpr int64_t kGigabyte = 1 << 30;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    for (const int64_t size : {2 * kGigabyte, 4 * kGigabyte - 1}) {
        const Source large(size);
        const TemporaryFile file;
        EXPECT_EQ(-1, writer->addMotionPhoto(large.fd(), -1, file.fd(), nullptr, 0)) << size;
        EXPECT_EQ(Bytes(), file.bytes());
    }
    const Source wrapped(4 * kGigabyte + 5);  // counts as five bytes
    const TemporaryFile file;
    EXPECT_EQ(0, writer->addMotionPhoto(wrapped.fd(), -1, file.fd(), nullptr, 0));
    EXPECT_EQ(13u, file.bytes().size());
}

Still smallStill() {
    setProperties("debug.quill.host.x265.preset=ultrafast");
    return Still(makeFrame(FORMAT_NV12, {64, 64, 64, 64}));
}

int write(Still& still, const std::string& packet, int video, Bytes exif = {}) {
    std::string xmp = packet;
    return still.writer->createLivePhoto(still.frame.bytes.data(), exif.empty() ? nullptr : exif.data(),
                                         static_cast<uint32_t>(exif.size()), xmp.data(),
                                         static_cast<uint32_t>(xmp.size()), nullptr, 0, -1, video, still.file.fd());
}

TEST(LivePhoto, StillKeepsItsMetadataAndTheVideoEndsTheFile) {
    const Bytes video = counted(5000);
    const Source source(video);
    const Bytes exif = {'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
    Still still = smallStill();
    CallLog::instance().start();
    ASSERT_EQ(0, write(still, kPacket, source.fd(), exif));
    const auto samples = CallLog::instance().of("MediaMuxer::writeSampleData");
    ASSERT_EQ(3u, samples.size());
    EXPECT_EQ("20 0 0 16", samples[0]) << "EXIF first: size, track, time, flags";
    EXPECT_EQ(std::to_string(sizeof(kPacket) - 1) + " 0 0 16", samples[1]) << "then XMP";
    EXPECT_THAT(samples[2], testing::EndsWith(" 0 0 1")) << "then the picture";

    const ReadStill read = readStill(still.file.path());
    EXPECT_EQ("", read.error);
    EXPECT_THAT(read.exif, ElementsAre(exif));
    EXPECT_THAT(read.xmp, ElementsAre(kPacket));
    EXPECT_GE(psnr(still.frame.shown, read.planes).luma, 46);
    const Bytes file = still.file.bytes();
    Bytes last = {0, 0, 0x13, 0x90, 'm', 'p', 'v', 'd'};
    last.insert(last.end(), video.begin(), video.end());
    ASSERT_GT(file.size(), last.size());
    EXPECT_TRUE(std::equal(last.begin(), last.end(), file.end() - static_cast<ptrdiff_t>(last.size())));
}

TEST(LivePhoto, MissingVideoLeavesAWholeStillWithoutAPacket) {
    const LogCapture log;
    Still still = smallStill();
    EXPECT_EQ(-1, write(still, "", -1));
    EXPECT_EQ("E/file isn't opened", log.of(kTag).back());
    const ReadStill read = readStill(still.file.path());
    EXPECT_EQ("", read.error);
    EXPECT_THAT(read.xmp, ElementsAre());
    EXPECT_EQ(0, still.writer->addGainMap(-1, -1)) << "no gain map is no failure";
}

TEST(LivePhoto, PacketOfAFailedCallIsKeptForTheNextWithoutOne) {
    const Source video(Bytes{1});
    const TemporaryFile file;
    CameraFrame frame = makeFrame(FORMAT_NV12, {64, 64, 64, 64});
    std::string packet = kPacket;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const auto writeWith = [&](size_t size) {
        return writer->createLivePhoto(frame.bytes.data(), nullptr, 0, packet.data(), static_cast<uint32_t>(size),
                                       nullptr, 0, -1, video.fd(), file.fd());
    };
    EXPECT_EQ(-1, writeWith(packet.size())) << "not started yet";
    writer->start(64, 64, 64, 64, FORMAT_NV12, 95, 0);
    EXPECT_EQ(0, writeWith(0));
    EXPECT_THAT(readStill(file.path(), false).xmp, ElementsAre(kPacket));
    writer->close();
    writer->destroy();
}

TEST(MotionPhotoXmp, TemplateIsTheCommandLinesAndReadable) {
    const std::string head = QuillHeifWriter::mXmpDataHead;
    const std::string tail = QuillHeifWriter::mXmpDataTail;
    EXPECT_EQ(966u, head.size());
    EXPECT_EQ(152u, tail.size());
    EXPECT_EQ("Item:Length=\"", head.substr(head.size() - 13));
    EXPECT_EQ('"', tail[0]);
    std::ifstream file(QUILL_SOURCE_DIR "/java/cli/com/quill/cli/motion-photo.xmp", std::ios::binary);
    EXPECT_EQ(head + tail, std::string(std::istreambuf_iterator<char>(file), {}));
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    EXPECT_TRUE(writer->createXmp(0));
}

}  // namespace
