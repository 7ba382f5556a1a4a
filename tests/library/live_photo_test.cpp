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

/** `addMotionPhoto` of a video of zeros that take no room on the disk. */
int append(int64_t videoBytes, const TemporaryFile& file) {
    const TemporaryFile video;
    EXPECT_EQ(0, ftruncate(video.fd(), videoBytes));
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    return writer->addMotionPhoto(video.fd(), -1, file.fd(), nullptr, 0);
}

TEST(LivePhotoBoxes, LargeVideoIsCopiedInConstantMemory) {
    constexpr int64_t kVideo = 300 * 1000 * 1000;
    const TemporaryFile file;
    rusage before{}, after{};
    getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(0, append(kVideo, file));
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(kVideo + 8, lseek(file.fd(), 0, SEEK_END));
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, kVideo / 1000 / 30) << "kB";  // a sanitizer keeps books of its own
}

TEST(LivePhotoBoxes, SizeThatIsNoneIsRefused) {
    constexpr int64_t kGigabyte = 1 << 30;
    const TemporaryFile file;
    for (const int64_t size : {2 * kGigabyte, 4 * kGigabyte - 1}) {
        EXPECT_EQ(-1, append(size, file)) << size;
        EXPECT_EQ(Bytes(), file.bytes());
    }
    EXPECT_EQ(0, append(4 * kGigabyte + 5, file));  // counts as five bytes
    EXPECT_EQ(13u, file.bytes().size());
}

Still smallStill() {
    setProperties("debug.quill.host.encoder=free");
    return Still(makeFrame(FORMAT_NV12, {64, 64, 64, 64}));
}

int write(Still& still, std::string packet, int video, int file, Bytes exif = {}) {
    return still.writer->createLivePhoto(still.frame.bytes.data(), exif.data(), static_cast<uint32_t>(exif.size()),
                                         packet.data(), static_cast<uint32_t>(packet.size()), nullptr, 0, -1, video,
                                         file);
}

TEST(LivePhoto, StillKeepsItsMetadata) {
    const TemporaryFile video({1});
    const Bytes exif = {'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0};
    Still still = smallStill();
    CallLog::instance().start();
    ASSERT_EQ(0, write(still, kPacket, video.fd(), still.file.fd(), exif));
    EXPECT_THAT(CallLog::instance().of("MediaMuxer::writeSampleData"),
                ElementsAre("20 0 0 16", std::to_string(sizeof(kPacket) - 1) + " 0 0 16", testing::EndsWith(" 0 0 1")))
            << "EXIF, XMP and the picture: size, track, time, flags";
    const ReadStill read = readStill(still.file.path(), false);
    EXPECT_EQ("", read.error);
    EXPECT_THAT(read.exif, ElementsAre(exif));
    EXPECT_THAT(read.xmp, ElementsAre(kPacket));
}

TEST(LivePhoto, MissingVideoLeavesAWholeStillWithoutAPacket) {
    const LogCapture log;
    Still still = smallStill();
    EXPECT_EQ(-1, write(still, "", -1, still.file.fd()));
    EXPECT_EQ("E/file isn't opened", log.of(kTag).back());
    const ReadStill read = readStill(still.file.path());
    EXPECT_EQ("", read.error);
    EXPECT_THAT(read.xmp, ElementsAre());
    EXPECT_EQ(0, still.writer->addGainMap(-1, -1)) << "no gain map is no failure";
    EXPECT_TRUE(still.writer->createXmp(0));
}

TEST(LivePhoto, PacketOfAFailedCallIsKeptForTheNextWithoutOne) {
    const TemporaryFile video({1});
    Still still = smallStill();
    EXPECT_EQ(-1, write(still, kPacket, video.fd(), -1));
    EXPECT_EQ(0, write(still, "", video.fd(), still.file.fd()));
    EXPECT_THAT(readStill(still.file.path(), false).xmp, ElementsAre(kPacket));
}

TEST(MotionPhotoXmp, TemplateIsTheCommandLinesAndReadable) {
    const std::string head = QuillHeifWriter::mXmpDataHead, tail = QuillHeifWriter::mXmpDataTail;
    EXPECT_EQ("Item:Length=\"", head.substr(head.size() - 13));
    EXPECT_EQ('"', tail[0]);
    std::ifstream file(QUILL_SOURCE_DIR "/java/cli/com/quill/cli/motion-photo.xmp", std::ios::binary);
    EXPECT_EQ(head + tail, std::string(std::istreambuf_iterator<char>(file), {}));
}

}  // namespace
