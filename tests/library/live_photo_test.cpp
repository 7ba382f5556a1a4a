// Live photos: the boxes behind the still, what is refused and left then, and the packet that tells of the video.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

#include <libheif/heif.h>

#include "HeifWriterJni.h"
#include "support/FakeVm.h"
#include "support/HeifReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"
#include "testing/CallLog.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::CallLog;
using testing::ElementsAre;
using Bytes = std::vector<uint8_t>;

constexpr char kTag[] = "QuillHeifWriter";
constexpr char kSeekFailure[] = "E/lseek failure";
constexpr char kPacket[] = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
constexpr int64_t kGigabyte = int64_t{1} << 30;

Bytes counted(size_t size, uint8_t start = 0) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(start + i + i / 251);
    return bytes;
}

Bytes operator+(const Bytes& first, const Bytes& second) {
    Bytes both;
    both.reserve(first.size() + second.size());
    both.insert(both.end(), first.begin(), first.end());
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

Bytes box(const std::string& type, const Bytes& payload) {
    const size_t size = payload.size() + 8;
    return Bytes{static_cast<uint8_t>(size >> 24), static_cast<uint8_t>(size >> 16), static_cast<uint8_t>(size >> 8),
                 static_cast<uint8_t>(size)} +
           Bytes(type.begin(), type.end()) + payload;
}

/** A file to be appended, left at its end. */
struct Source : TemporaryFile {
    explicit Source(const Bytes& bytes) {
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(fd(), bytes.data(), bytes.size()));
    }
    /** Of zeros that take no room on the disk. */
    explicit Source(int64_t size) { EXPECT_EQ(0, ftruncate(fd(), size)); }
};

/** `addMotionPhoto` into an empty file. */
struct Appended {
    int result;
    Bytes file;
    std::vector<std::string> log;
};

Appended append(int video, int gainmap = -1, Bytes* extender = nullptr) {
    LogCapture log;
    const TemporaryFile file;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    log.clear();
    Appended appended;
    appended.result =
            writer->addMotionPhoto(video, gainmap, file.fd(), extender == nullptr ? nullptr : extender->data(),
                                   extender == nullptr ? 0 : static_cast<uint32_t>(extender->size()));
    appended.file = file.bytes();
    appended.log = log.of(kTag);
    return appended;
}

TEST(LivePhotoBoxes, SectionsFollowEachOtherWhole) {
    const Bytes video = counted(10000);
    const Bytes gainmap = counted(4097, 9);
    Bytes extender = counted(300, 5);
    const Source videoFile(video);
    const Source gainmapFile(gainmap);
    const Appended all = append(videoFile.fd(), gainmapFile.fd(), &extender);
    EXPECT_EQ(0, all.result);
    EXPECT_THAT(Bytes(all.file.begin(), all.file.begin() + 8), ElementsAre(0, 0, 0x27, 0x18, 'm', 'p', 'v', 'd'));
    EXPECT_TRUE(all.file == box("mpvd", video) + box("gain", gainmap) + box("qext", extender));
    EXPECT_THAT(all.log, ElementsAre());

    const Appended videoOnly = append(videoFile.fd());
    EXPECT_EQ(0, videoOnly.result);
    EXPECT_TRUE(videoOnly.file == box("mpvd", video)) << "from its start, although it stood at its end";
    EXPECT_EQ(10000, lseek(videoFile.fd(), 0, SEEK_CUR)) << "open, where the copy ended";
}

TEST(LivePhotoBoxes, OutputIsAppendedToAtItsOffset) {
    const Source video(Bytes{1, 2});
    const Source output(Bytes{9, 9, 9, 9});
    lseek(output.fd(), 3, SEEK_SET);
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    EXPECT_EQ(0, writer->addMotionPhoto(video.fd(), -1, output.fd(), nullptr, 0));
    EXPECT_EQ((Bytes{9, 9, 9}) + box("mpvd", {1, 2}), output.bytes());
}

TEST(LivePhotoBoxes, VideoWithoutAUsableSizeIsRefused) {
    int pipeEnds[2];
    ASSERT_EQ(0, pipe(pipeEnds));
    const Source twoGigabytes(2 * kGigabyte);
    const Source nearlyFour(4 * kGigabyte - 1);
    for (const int video : {twoGigabytes.fd(), nearlyFour.fd(), pipeEnds[0]}) {
        const Appended refused = append(video);
        EXPECT_EQ(-1, refused.result);
        EXPECT_TRUE(refused.file.empty());
        EXPECT_THAT(refused.log, ElementsAre(kSeekFailure));
    }
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

TEST(LivePhotoBoxes, VideoBeyondFourGigabytesCountsModulo) {
    const Source video(4 * kGigabyte + 5);
    const Appended cut = append(video.fd());
    EXPECT_EQ(0, cut.result);
    EXPECT_EQ(box("mpvd", Bytes(5)), cut.file);
}

TEST(LivePhotoBoxes, RefusedGainMapLeavesTheVideo) {
    const Source video(Bytes{1, 2, 3});
    const Source gainmap(2 * kGigabyte);
    Bytes extender = {4};
    const Appended refused = append(video.fd(), gainmap.fd(), &extender);
    EXPECT_EQ(-1, refused.result);
    EXPECT_EQ(box("mpvd", {1, 2, 3}), refused.file);
    EXPECT_THAT(refused.log, ElementsAre(kSeekFailure));
}

TEST(LivePhotoBoxes, MissingDescriptorsAreNamed) {
    const Source video(Bytes{1});
    EXPECT_THAT(append(-1).log, ElementsAre("E/file isn't opened"));
    const LogCapture log;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    EXPECT_EQ(-1, writer->addMotionPhoto(video.fd(), -1, -1, nullptr, 0));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: file isn't opened"));
    EXPECT_EQ(0, writer->addGainMap(-1, -1)) << "no gain map is no failure";
}

TEST(LivePhotoBoxes, UnwritableOutputShowsAtTheExtenderOnly) {
    const Source video(Bytes{1});
    const int readOnly = open(video.path().c_str(), O_RDONLY | O_CLOEXEC);
    const LogCapture log;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    uint8_t extender = 7;
    EXPECT_EQ(0, writer->addMotionPhoto(video.fd(), -1, readOnly, nullptr, 0));
    EXPECT_EQ(-1, writer->addMotionPhoto(video.fd(), -1, readOnly, &extender, 1));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: Failed to write fileExtender to file"));
    close(readOnly);
}

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
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 1024) << "kB";
}

// ---- with the still ------------------------------------------------------------------------------------------------

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

/** The XMP item's body as an independent reader gives it. */
std::string xmpOf(const std::string& path) {
    heif_context* const context = heif_context_alloc();
    heif_image_handle* primary = nullptr;
    heif_context_read_from_file(context, path.c_str(), nullptr);
    heif_context_get_primary_image_handle(context, &primary);
    heif_item_id id = 0;
    std::string body;
    if (heif_image_handle_get_list_of_metadata_block_IDs(primary, "mime", &id, 1) == 1) {
        body.resize(heif_image_handle_get_metadata_size(primary, id));
        heif_image_handle_get_metadata(primary, id, body.data());
    }
    heif_image_handle_release(primary);
    heif_context_free(context);
    return body;
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
    EXPECT_EQ(kPacket, xmpOf(still.file.path()));
    EXPECT_GE(psnr(still.frame.shown, read.planes).luma, 38);
    const Bytes file = still.file.bytes();
    const Bytes last = box("mpvd", video);
    ASSERT_GT(file.size(), last.size());
    EXPECT_TRUE(std::equal(last.begin(), last.end(), file.end() - static_cast<ptrdiff_t>(last.size())));
}

TEST(LivePhoto, MissingVideoLeavesAWholeStillWithoutAPacket) {
    const LogCapture log;
    Still still = smallStill();
    EXPECT_EQ(-1, write(still, "", -1));
    EXPECT_EQ("E/file isn't opened", log.of(kTag).back());
    EXPECT_EQ("", readStill(still.file.path()).error);
    EXPECT_EQ("", xmpOf(still.file.path()));
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
    EXPECT_EQ(kPacket, xmpOf(file.path()));
    writer->close();
    writer->destroy();
}

TEST(LivePhoto, ReadOnlyOutputIsLoggedForAnArrayButNotForABitmap) {
    FakeVm java;
    JNI_OnLoad(java.vm(), nullptr);
    const Source video(Bytes{1});
    FakeVm::Object videoFd;
    videoFd.fd = video.fd();
    FakeVm::Object options;
    options.fields["videoFd"] = FakeVm::asJava(&videoFd);
    FakeVm::Object output;
    output.fd = open(video.path().c_str(), O_RDONLY | O_CLOEXEC);
    FakeVm::Object object;
    FakeVm::Array frame;
    const LogCapture log;
    EXPECT_EQ(-1, nativeCreateLivePhotoByBmp(java.env(), FakeVm::asJava(&object), 0, FakeVm::asJava(&object), nullptr,
                                             FakeVm::asJava(&output), FakeVm::asJava(&options)));
    EXPECT_THAT(log.lines(), ElementsAre());
    EXPECT_EQ(-1, nativeCreateLivePhoto(java.env(), FakeVm::asJava(&object), 0, FakeVm::asJava(&frame), nullptr,
                                        FakeVm::asJava(&output), FakeVm::asJava(&options)));
    EXPECT_THAT(log.lines(), ElementsAre("E/NativeHeifWriter: File descriptor is not in read-write mode or write-only "
                                         "mode!"));
    EXPECT_THAT(java.thrown, ElementsAre()) << "before the handle is looked at";
    close(output.fd);
}

// ---- the packet ----------------------------------------------------------------------------------------------------

TEST(MotionPhotoXmp, TemplateIsTheCommandLinesAndReadable) {
    const std::string head = QuillHeifWriter::mXmpDataHead;
    const std::string tail = QuillHeifWriter::mXmpDataTail;
    EXPECT_EQ(966u, head.size());
    EXPECT_EQ(152u, tail.size());
    EXPECT_EQ("Item:Length=\"", head.substr(head.size() - 13));
    EXPECT_EQ('"', tail[0]);
    std::ifstream file(QUILL_SOURCE_DIR "/java/com/quill/cli/motion-photo.xmp", std::ios::binary);
    EXPECT_EQ(head + tail, std::string(std::istreambuf_iterator<char>(file), {}));
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    EXPECT_TRUE(writer->createXmp(0));
}

}  // namespace
