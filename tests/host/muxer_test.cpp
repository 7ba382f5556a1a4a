// The muxer's files, byte by byte where no reader minds. fuzz/muxer.cpp tries calls in any order.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaMuxer.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

#include "HevcEngine.h"
#include "support/HeifReader.h"
#include "support/TemporaryFiles.h"

namespace {

using namespace android;
using namespace quill::test;
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
    quill::host::PlanarPicture gray;
    gray.reshape(width, kTile, bits);
    std::vector<uint8_t> coded;
    EXPECT_TRUE(engine->encode(gray, std::nullopt, &coded));
    return {textOf(engine->parameterSets()), textOf(coded)};
}

sp<ABuffer> bufferOf(const std::string& bytes) { return ABuffer::CreateAsCopy(bytes.data(), bytes.size()); }

using Keys = std::vector<std::pair<const char*, int>>;

sp<AMessage> formatOf(const Picture& picture, const Keys& keys = {}) {
    sp<AMessage> format = new AMessage;
    format->setString("mime", "image/vnd.android.heic");
    for (const char* side : {"width", "height"}) format->setInt32(side, kTile);
    for (const auto& [key, value] : keys) format->setInt32(key, value);
    format->setBuffer("csd-0", bufferOf(picture.codecData));
    return format;
}

status_t write(const sp<MediaMuxer>& muxer, const std::string& bytes, uint32_t flags = 1, size_t track = 0) {
    return muxer->writeSampleData(bufferOf(bytes), track, 0, flags);
}

class Muxer : public testing::Test {
  protected:
    ~Muxer() override { EXPECT_EQ(0, close(dup(mFile.fd()))) << "the caller's descriptor was closed"; }

    sp<MediaMuxer> muxer() const { return MediaMuxer::create(mFile.fd(), MediaMuxer::OUTPUT_FORMAT_HEIF); }
    /** A started muxer with these tracks. */
    sp<MediaMuxer> started(const std::vector<sp<AMessage>>& formats) const {
        sp<MediaMuxer> result = muxer();
        for (size_t i = 0; i < formats.size(); ++i) EXPECT_EQ(ssize_t(i), result->addTrack(formats[i]));
        EXPECT_EQ(OK, result->start());
        return result;
    }
    void writeStill(const Picture& picture, const std::vector<std::string>& metadata = {}, off_t at = 0) const {
        lseek(mFile.fd(), at, SEEK_SET);
        const sp<MediaMuxer> still = started({formatOf(picture)});
        for (const auto& sample : metadata) EXPECT_EQ(OK, write(still, sample, BUFFER_FLAG_MUXER_DATA));
        EXPECT_EQ(OK, write(still, picture.sample));
        EXPECT_EQ(OK, still->stop());
    }
    std::string file() const { return textOf(mFile.bytes()); }

    const TemporaryFile mFile;
    const Picture mPicture = encode();
};

TEST_F(Muxer, SinglePictureTellsItsBrandsDepthAndColors) {
    // For a picture of the same size, without color information: the default is full-range sRGB.
    const std::string kPlainCodecData =
            "\0\0\0\1\100\1\14\1\377\377\3\160\0\0\3\0\220\0\0\3\0\0\3\0\36\272\2\100\0\0\0\1\102\1\1\3\160\0\0\3"
            "\0\220\0\0\3\0\0\3\0\36\240\40\201\5\226\351\157\13\200\100\0\0\3\0\100\0\0\3\0\102\0\0\0\1\104\1"
            "\300\161\203\22"s;
    for (const auto& [picture, brands, depth, colors] :
         {std::tuple(mPicture, "heic\0\0\0\0mif1heicmiaf"s, "\3\10\10\10"s, "\0\5\0\15\0\5\x80"s),
          {encode(10), "heix\0\0\0\0mif1heixmiaf"s, "\3\12\12\12"s, "\0\5\0\15\0\5\x80"s},
          {{kPlainCodecData, mPicture.sample}, "heic"s, "\3\10\10\10"s, "\0\1\0\15\0\6\x80"s}}) {
        writeStill(picture);
        EXPECT_THAT(file(), AllOf(HasSubstr("ftyp" + brands), HasSubstr("pixi\0\0\0\0"s + depth),
                                  HasSubstr("nclx" + colors), Not(HasSubstr("iref"))));
        EXPECT_EQ("", readStill(mFile.path(), false).error);
    }
}

TEST_F(Muxer, MetadataOfEveryFramingIsHiddenAndRefersToTheImage) {
    const std::string tiff = "II*\0\10\0\0\0\0\0\0\0\0\0"s, marked = "Exif\0\0"s + tiff;
    const std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
    for (const std::string& exif : {tiff, marked, "\xFF\xE1\0\x16"s + marked}) {
        writeStill(mPicture, {exif, xmp});
        EXPECT_THAT(file(), AllOf(HasSubstr("infe\2\0\0\1\0\2\0\0Exif"s), HasSubstr("infe\2\0\0\1\0\3\0\0mime"s),
                                  HasSubstr(std::string{0, 0, 0, char(exif.size() - tiff.size())} + exif)));
        const ReadStill read = readStill(mFile.path(), false);
        EXPECT_TRUE(read.exif.size() == 1 && read.xmp == std::vector{xmp}) << read.error;
    }
    writeStill(mPicture, {"", "neither", "Exif\0\0"s, "<?xml version='1.0'?>"});
    EXPECT_THAT(file(), AllOf(Not(HasSubstr("Exif")), Not(HasSubstr("mime"))));
}

TEST_F(Muxer, RepeatedParameterSetsStayOutOfTheSample) {
    writeStill(mPicture);
    const std::string plain = file();
    writeStill({mPicture.codecData, mPicture.codecData + mPicture.sample});
    EXPECT_EQ(plain, file());
}

TEST_F(Muxer, SamplesThatDoNotDecodeAloneAreRefused) {
    const Picture wider = encode(8, 2 * kTile);
    const sp<MediaMuxer> still = started({formatOf(mPicture)});
    const std::string trailing = "\0\0\0\1\2\1\x80"s;  // a picture that refers to others
    for (const std::string& sample : {""s, mPicture.sample.substr(4), trailing, mPicture.codecData, "\0\0\1"s,
                                      wider.codecData + wider.sample /* of another SPS than csd-0's */}) {
        EXPECT_EQ(BAD_VALUE, write(still, sample));
    }
    EXPECT_EQ(BAD_VALUE, write(still, mPicture.sample, 0)) << "no sync frame";
    EXPECT_EQ(BAD_VALUE, write(still, mPicture.sample, 1, 1)) << "no such track";
    EXPECT_EQ(BAD_VALUE, still->writeSampleData(nullptr, 0, 0, 1));
    EXPECT_EQ(OK, write(still, mPicture.codecData, BUFFER_FLAG_CODEC_CONFIG));
    EXPECT_EQ(OK, write(still, mPicture.sample));
}

TEST_F(Muxer, HintIsAQuarterTurnGivenBeforeTheStart) {
    for (const int degrees : {45, 360, -90}) EXPECT_EQ(BAD_VALUE, muxer()->setOrientationHint(degrees)) << degrees;
    EXPECT_EQ(OK, muxer()->setOrientationHint(270));
    const sp<MediaMuxer> still = started({formatOf(mPicture)});
    EXPECT_EQ(INVALID_OPERATION, still->setOrientationHint(90));
    EXPECT_NE(OK, still->stop()) << "without its tile";
}

TEST_F(Muxer, TracksThatDoNotFitAreRefused) {
    std::vector<sp<AMessage>> formats = {nullptr, new AMessage, formatOf({"", ""}), formatOf(mPicture, {{"width", 65}}),
                                         formatOf(mPicture, {{"grid-rows", 1}})};
    const Keys grid = {
            {"width", 2 * kTile}, {"tile-width", kTile}, {"tile-height", kTile}, {"grid-cols", 2}, {"grid-rows", 1}};
    for (const auto& wrong : Keys{{"width", 0},
                                  {"width", 129},
                                  {"height", 65},
                                  {"grid-cols", 257},
                                  {"grid-rows", -1},
                                  {"tile-width", 72}}) {
        formats.push_back(formatOf(mPicture, grid));
        formats.back()->setInt32(wrong.first, wrong.second);
    }
    const sp<MediaMuxer> still = muxer();
    for (size_t i = 0; i < formats.size(); ++i) EXPECT_EQ(BAD_VALUE, still->addTrack(formats[i])) << "format " << i;
    EXPECT_EQ(0, still->addTrack(formatOf(mPicture, grid)));
}

TEST_F(Muxer, SeveralTracksHaveTheDefaultOneAsPrimary) {
    const sp<MediaMuxer> both = started({formatOf(mPicture), formatOf(mPicture, {{"is-default", 1}})});
    for (const size_t track : {0, 1}) EXPECT_EQ(OK, write(both, mPicture.sample, 1, track));
    EXPECT_EQ(OK, both->stop());
    EXPECT_THAT(file(), HasSubstr("pitm\0\0\0\0\0\2"s));
    EXPECT_EQ(2, readStill(mFile.path()).topLevelImages);
}

TEST_F(Muxer, OffsetsBeyondFourGigabytesAreWide) {
    constexpr off_t kFourGigabytes = off_t{1} << 32;
    writeStill(mPicture, {}, kFourGigabytes);  // behind a hole
    std::string bytes(size_t(lseek(mFile.fd(), 0, SEEK_CUR) - kFourGigabytes), 0);
    ASSERT_EQ(ssize_t(bytes.size()), pread(mFile.fd(), bytes.data(), bytes.size(), kFourGigabytes));
    const size_t location = bytes.find("iloc"), mediaData = bytes.find("mdat") + 4;
    EXPECT_EQ('\x88', bytes.at(location + 8)) << "bytes of offset and length";
    EXPECT_EQ((std::string{0, 0, 0, 1, 0, 0, char(mediaData >> 8), char(mediaData)}), bytes.substr(location + 20, 8));
}

}  // namespace
