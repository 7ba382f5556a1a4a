// The muxer's files, read back by heif-info and exiftool. fuzz/muxer.cpp tries calls in any order.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaMuxer.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

#include "HevcEngine.h"

namespace {

using namespace android;
using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kTile = 64;

struct Picture {
    std::string codecData;
    std::string sample;
};

std::string textOf(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

Picture encode(int bits = 8, int width = kTile) {
    quill::host::EngineSettings settings;
    settings.width = width;
    settings.height = kTile;
    settings.bitDepth = bits;
    settings.aspects = {5, 13, 5, true};
    settings.preset = "ultrafast";
    const auto engine = quill::host::HevcEngine::open(settings);
    quill::host::PlanarPicture grey;
    grey.reshape(width, kTile, bits);
    std::vector<uint8_t> coded;
    EXPECT_TRUE(engine->encode(grey, std::nullopt, &coded));
    return {textOf(engine->parameterSets()), textOf(coded)};
}

/** For a picture of the same size, without colour information. */
const std::string kPlainCodecData =
        "\0\0\0\1\100\1\14\1\377\377\3\160\0\0\3\0\220\0\0\3\0\0\3\0\36\272\2\100\0\0\0\1\102\1\1\3\160\0\0\3"
        "\0\220\0\0\3\0\0\3\0\36\240\40\201\5\226\351\157\13\200\100\0\0\3\0\100\0\0\3\0\102\0\0\0\1\104\1"
        "\300\161\203\22"s;

sp<ABuffer> bufferOf(const std::string& bytes) { return ABuffer::CreateAsCopy(bytes.data(), bytes.size()); }

sp<AMessage> formatOf(const Picture& picture, int width = kTile, int height = kTile) {
    sp<AMessage> format = new AMessage;
    format->setString("mime", "image/vnd.android.heic");
    format->setInt32("width", width);
    format->setInt32("height", height);
    format->setBuffer("csd-0", bufferOf(picture.codecData));
    return format;
}

std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char block[4096];
    for (size_t got; pipe && (got = fread(block, 1, sizeof(block), pipe)) > 0;) output.append(block, got);
    return pipe && pclose(pipe) == 0 ? output : "FAILED: " + output;
}

class Muxer : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/muxer_test.XXXXXX";
        mFolder = mkdtemp(name);
        mPath = mFolder + "/image.heic";
        mFd = open(mPath.c_str(), O_RDWR | O_CREAT, 0600);
    }
    void TearDown() override {
        EXPECT_EQ(0, close(mFd)) << "the caller's descriptor was closed";
        outputOf("rm -r " + mFolder);
    }

    sp<MediaMuxer> muxer() const { return MediaMuxer::create(mFd, MediaMuxer::OUTPUT_FORMAT_HEIF); }
    /** A started muxer with one track. */
    sp<MediaMuxer> started(const sp<AMessage>& format) {
        sp<MediaMuxer> result = muxer();
        EXPECT_EQ(0, result->addTrack(format));
        EXPECT_EQ(OK, result->start());
        return result;
    }
    static status_t write(const sp<MediaMuxer>& muxer, const std::string& bytes, uint32_t flags = 1) {
        return muxer->writeSampleData(bufferOf(bytes), 0, 0, flags);
    }
    void writeStill(const Picture& picture = encode(), const std::vector<std::string>& metadata = {}) {
        const sp<MediaMuxer> still = started(formatOf(picture));
        for (const auto& sample : metadata) EXPECT_EQ(OK, write(still, sample, BUFFER_FLAG_MUXER_DATA));
        EXPECT_EQ(OK, write(still, picture.sample));
        EXPECT_EQ(OK, still->stop());
    }

    std::string file() const {
        std::ifstream stream(mPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string boxes() const { return outputOf("heif-info -d " + mPath); }
    std::string tags(const std::string& options) const { return outputOf("exiftool " + options + " " + mPath); }
    std::string mFolder, mPath;
    int mFd = -1;
};

TEST_F(Muxer, SinglePictureTellsItsBrandsDepthAndColours) {
    writeStill();
    EXPECT_EQ(off_t(file().size()), lseek(mFd, 0, SEEK_CUR));
    EXPECT_THAT(file().substr(4, 24), "ftypheic\0\0\0\0mif1heicmiaf"s);
    EXPECT_THAT(file(), HasSubstr("pixi\0\0\0\0\3\10\10\10"s));
    EXPECT_THAT(file(), HasSubstr("nclx\0\5\0\15\0\5\x80"s)) << "the bitstream's colours";
    EXPECT_THAT(boxes(), AllOf(Not(HasSubstr("iref")), Not(HasSubstr("FAILED"))));
    lseek(mFd, 0, SEEK_SET);
    writeStill(encode(10));
    EXPECT_EQ("ftypheix", file().substr(4, 8));
    EXPECT_THAT(file(), HasSubstr("pixi\0\0\0\0\3\12\12\12"s));
    lseek(mFd, 0, SEEK_SET);
    writeStill({kPlainCodecData, encode().sample});
    EXPECT_THAT(file(), HasSubstr("nclx\0\1\0\15\0\6\x80"s)) << "the default is full-range sRGB";
}

// One directory with one entry: Make is "Quill", at offset 26.
const std::string kTiff = "II*\0\10\0\0\0\1\0\17\1\2\0\6\0\0\0\32\0\0\0\0\0\0\0Quill\0"s;

TEST_F(Muxer, ExifIsFoundInEveryFraming) {
    const std::string marked = "Exif\0\0"s + kTiff;
    for (const std::string& sample : {kTiff, marked, "\xFF\xE1\0\x28"s + marked}) {
        lseek(mFd, 0, SEEK_SET);
        writeStill(encode(), {sample});
        EXPECT_EQ("Quill\n", tags("-s3 -Make")) << sample.size() - kTiff.size() << " bytes of framing";
        EXPECT_THAT(file(), HasSubstr(std::string{0, 0, 0, char(sample.size() - kTiff.size())} + sample));
        EXPECT_THAT(boxes(), HasSubstr("cdsc"));
    }
}

TEST_F(Muxer, MetadataIsNoImageToBeShown) {
    writeStill(encode(), {"Exif\0\0"s + kTiff, "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>"});
    EXPECT_THAT(file(), HasSubstr("infe\2\0\0\1\0\2\0\0Exif"s));
    EXPECT_THAT(file(), HasSubstr("infe\2\0\0\1\0\3\0\0mime"s));
    EXPECT_EQ("Quill\n", tags("-s3 -Make"));
    EXPECT_THAT(outputOf("heif-info " + mPath), AllOf(HasSubstr("Exif"), HasSubstr("XMP")));
}

TEST_F(Muxer, EmptyAndUnknownMetadataIsLeftOut) {
    writeStill(encode(), {"", "neither", "Exif\0\0"s, "<?xml version='1.0'?>"});
    EXPECT_THAT(boxes(), AllOf(Not(HasSubstr("Exif")), Not(HasSubstr("mime")), Not(HasSubstr("FAILED"))));
}

TEST_F(Muxer, RepeatedParameterSetsStayOutOfTheSample) {
    const Picture picture = encode();
    writeStill(picture);
    const std::string plain = file();
    lseek(mFd, 0, SEEK_SET);
    writeStill({picture.codecData, picture.codecData + picture.sample});
    EXPECT_EQ(plain, file());
}

TEST_F(Muxer, SamplesThatDoNotDecodeAloneAreRefused) {
    const Picture picture = encode();
    const Picture wider = encode(8, 2 * kTile);
    sp<MediaMuxer> still = started(formatOf(picture));
    const std::string trailing = "\0\0\0\1\2\1\x80"s;  // a picture that refers to others
    for (const std::string& sample : {""s, picture.sample.substr(4), trailing, picture.codecData, "\0\0\1"s}) {
        EXPECT_EQ(BAD_VALUE, write(still, sample));
    }
    EXPECT_EQ(BAD_VALUE, write(still, wider.codecData + wider.sample)) << "another SPS than csd-0's";
    EXPECT_EQ(BAD_VALUE, write(still, picture.sample, 0)) << "no sync frame";
    EXPECT_EQ(BAD_VALUE, still->writeSampleData(bufferOf(picture.sample), 1, 0, 1)) << "no such track";
    EXPECT_EQ(BAD_VALUE, still->writeSampleData(nullptr, 0, 0, 1));
    EXPECT_EQ(OK, write(still, picture.codecData, BUFFER_FLAG_CODEC_CONFIG));
    EXPECT_EQ(OK, write(still, picture.sample));
}

TEST_F(Muxer, HintIsAQuarterTurnGivenBeforeTheStart) {
    sp<MediaMuxer> still = muxer();
    EXPECT_EQ(BAD_VALUE, still->setOrientationHint(45));
    EXPECT_EQ(BAD_VALUE, still->setOrientationHint(360));
    EXPECT_EQ(OK, still->setOrientationHint(270));
    EXPECT_EQ(0, still->addTrack(formatOf(encode())));
    EXPECT_EQ(OK, still->start());
    EXPECT_EQ(INVALID_OPERATION, still->setOrientationHint(90));
    EXPECT_EQ(1, still->getTrackCount());
    EXPECT_NE(OK, still->stop());
    EXPECT_EQ(-1, still->getTrackCount());
}

TEST_F(Muxer, TracksThatDoNotFitAreRefused) {
    const Picture picture = encode();
    std::vector<sp<AMessage>> formats = {nullptr, new AMessage, formatOf(picture, 65, 64), formatOf(picture)};
    formats.back()->setInt32("grid-rows", 1);
    formats.push_back(formatOf({"", ""}));
    for (const auto& [key, value] : {std::pair("width", 0),
                                     {"width", 129},
                                     {"height", 65},
                                     {"grid-cols", 257},
                                     {"grid-rows", -1},
                                     {"tile-width", 72}}) {
        sp<AMessage> grid = formatOf(picture, 2 * kTile, kTile);
        grid->setInt32("tile-width", kTile);
        grid->setInt32("tile-height", kTile);
        grid->setInt32("grid-cols", 2);
        grid->setInt32("grid-rows", 1);
        grid->setInt32(key, value);
        formats.push_back(grid);
    }
    sp<MediaMuxer> still = muxer();
    for (size_t i = 0; i < formats.size(); ++i) EXPECT_EQ(BAD_VALUE, still->addTrack(formats[i])) << "format " << i;
    EXPECT_EQ(0, still->getTrackCount());
}

TEST_F(Muxer, SeveralTracksHaveTheDefaultOneAsPrimary) {
    const Picture picture = encode();
    sp<AMessage> second = formatOf(picture);
    second->setInt32("is-default", 1);
    sp<MediaMuxer> both = muxer();
    EXPECT_EQ(0, both->addTrack(formatOf(picture)));
    EXPECT_EQ(1, both->addTrack(second));
    EXPECT_EQ(OK, both->start());
    for (size_t track : {0, 1}) EXPECT_EQ(OK, both->writeSampleData(bufferOf(picture.sample), track, 0, 1));
    EXPECT_EQ(OK, both->stop());
    EXPECT_THAT(outputOf("heif-info " + mPath), HasSubstr("64x64 (id=2), primary"));
}

TEST_F(Muxer, OffsetsBeyondFourGigabytesAreWide) {
    constexpr off_t kFourGigabytes = off_t{1} << 32;
    lseek(mFd, kFourGigabytes, SEEK_SET);  // leaves a hole
    writeStill();
    const off_t end = lseek(mFd, 0, SEEK_CUR);
    std::string bytes(size_t(end - kFourGigabytes), 0);
    ASSERT_EQ(ssize_t(bytes.size()), pread(mFd, bytes.data(), bytes.size(), kFourGigabytes));
    const size_t location = bytes.find("iloc");
    EXPECT_EQ('\x88', bytes.at(location + 8)) << "bytes of offset and length";
    const auto mediaData = uint64_t(kFourGigabytes) + bytes.find("mdat") + 4;
    uint64_t offset = 0;
    for (size_t i = 20; i < 28; ++i) offset = offset << 8 | uint8_t(bytes.at(location + i));
    EXPECT_EQ(mediaData, offset);
}

}  // namespace
