// What the muxer writes, read back by other people's programs: heif-info, heif-convert and exiftool.
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <x265.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <sstream>

#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/MediaMuxer.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

namespace {

using namespace android;
using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int kTile = 64;

// x265 is part of the stand-in, not of its interface: it is found at run time.
#define TEXT_OF(x) #x
#define NAME_OF(x) TEXT_OF(x)
const x265_api* encoderFor(int bits) {
    void* const get = dlsym(RTLD_DEFAULT, NAME_OF(x265_api_get));
    return get == nullptr ? nullptr : reinterpret_cast<const x265_api* (*)(int)>(get)(bits);
}

struct Picture {
    std::string codecData;
    std::string sample;
};

struct PictureOptions {
    int width = kTile;
    int height = kTile;
    int bits = 8;
    bool vui = true;
    bool repeatHeaders = false;
    std::function<int(int x, int y)> luma = [](int, int) { return 100; };
};

std::string allNals(const x265_nal* nals, uint32_t count) {
    std::string bytes;
    for (uint32_t i = 0; i < count; ++i)
        bytes.append(reinterpret_cast<const char*>(nals[i].payload), nals[i].sizeBytes);
    return bytes;
}

void configure(x265_param* param, const PictureOptions& options) {
    param->sourceWidth = options.width;
    param->sourceHeight = options.height;
    param->fpsNum = param->fpsDenom = 1;
    param->totalFrames = 1;
    param->internalCsp = X265_CSP_I420;
    param->maxCUSize = 16;
    param->bRepeatHeaders = options.repeatHeaders;
    param->bEmitInfoSEI = 0;
    param->logLevel = X265_LOG_NONE;
    param->vui.bEnableVideoSignalTypePresentFlag = options.vui;
    param->vui.bEnableColorDescriptionPresentFlag = options.vui;
    param->vui.bEnableVideoFullRangeFlag = 1;
    param->vui.colorPrimaries = param->vui.matrixCoeffs = 5;
    param->vui.transferCharacteristics = 13;
    param->rc.rateControlMode = X265_RC_CQP;
    param->rc.qp = 10;
}

Picture encode(const PictureOptions& options = {}) {
    const x265_api* api = encoderFor(options.bits);
    x265_param* param = api->param_alloc();
    api->param_default_preset(param, "ultrafast", "zerolatency");
    configure(param, options);
    api->param_apply_profile(param, options.bits == 10 ? "main10" : "main");
    x265_encoder* encoder = api->encoder_open(param);

    const size_t sampleSize = options.bits > 8 ? 2 : 1;
    const int pixels = options.width * options.height;
    std::vector<uint8_t> planes(2 * sampleSize * pixels, options.bits > 8 ? 0x02 : 0x80);
    for (int i = 0; i < pixels; ++i) {
        planes[sampleSize * i] = uint8_t(options.luma(i % options.width, i / options.width));
    }
    x265_picture* picture = api->picture_alloc();
    api->picture_init(param, picture);
    picture->bitDepth = options.bits;
    for (int i = 0; i < 3; ++i) {
        picture->planes[i] = planes.data() + (i ? sampleSize * pixels : 0);
        picture->stride[i] = (i ? options.width / 2 : options.width) * int(sampleSize);
    }
    x265_nal* nals = nullptr;
    uint32_t count = 0;
    Picture result;
    api->encoder_headers(encoder, &nals, &count);
    result.codecData = allNals(nals, count);
    if (api->encoder_encode(encoder, &nals, &count, picture, nullptr) < 1) {
        api->encoder_encode(encoder, &nals, &count, nullptr, nullptr);
    }
    result.sample = allNals(nals, count);
    api->picture_free(picture);
    api->encoder_close(encoder);
    api->param_free(param);
    return result;
}

sp<ABuffer> bufferOf(const std::string& bytes) { return ABuffer::CreateAsCopy(bytes.data(), bytes.size()); }

sp<AMessage> formatOf(const Picture& picture, int width = kTile, int height = kTile) {
    sp<AMessage> format = new AMessage;
    format->setString("mime", "image/vnd.android.heic");
    format->setInt32("width", width);
    format->setInt32("height", height);
    format->setBuffer("csd-0", bufferOf(picture.codecData));
    return format;
}

sp<AMessage> gridOf(const Picture& picture, int width, int height, int columns, int rows) {
    sp<AMessage> format = formatOf(picture, width, height);
    format->setInt32("tile-width", kTile);
    format->setInt32("tile-height", kTile);
    format->setInt32("grid-cols", columns);
    format->setInt32("grid-rows", rows);
    return format;
}

std::string outputOf(const std::string& command) {
    std::string output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    char block[4096];
    for (size_t got; pipe && (got = fread(block, 1, sizeof(block), pipe)) > 0;) output.append(block, got);
    return pipe && pclose(pipe) == 0 ? output : "FAILED: " + output;
}

struct Planes {
    int width = 0, height = 0;
    std::string samples;  // luma first
    int lumaAt(int x, int y) const { return uint8_t(samples.at(size_t(y) * size_t(width) + size_t(x))); }
};

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

    sp<MediaMuxer> muxer(int fd = -1) { return MediaMuxer::create(fd < 0 ? mFd : fd, MediaMuxer::OUTPUT_FORMAT_HEIF); }
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
    void writeStill(const std::vector<std::string>& metadata = {}) { writePicture(encode(), kTile, kTile, metadata); }
    void writePicture(const Picture& picture, int width = kTile, int height = kTile,
                      const std::vector<std::string>& metadata = {}) {
        sp<MediaMuxer> still = started(formatOf(picture, width, height));
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
    Planes decoded() const {
        Planes planes;
        const std::string output = outputOf("heif-convert " + mPath + " " + mFolder + "/out.y4m");
        std::ifstream stream(mFolder + "/out.y4m", std::ios::binary);
        std::string header, frame;
        std::getline(stream, header);
        std::getline(stream, frame);
        EXPECT_EQ(2, sscanf(header.c_str(), "YUV4MPEG2 W%d H%d", &planes.width, &planes.height)) << output;
        planes.samples.assign(std::istreambuf_iterator<char>(stream), {});
        return planes;
    }
    /** Offset and length of the first item, by the fixed layout of the location box. */
    std::pair<uint32_t, uint32_t> firstExtent() const {
        const std::string bytes = file();
        const size_t at = bytes.find("iloc") + 20;
        const auto number = [&](size_t i) {
            uint32_t value = 0;
            for (size_t k = i; k < i + 4; ++k) value = value << 8 | uint8_t(bytes.at(k));
            return value;
        };
        return {number(at), number(at + 4)};
    }

    std::string mFolder, mPath;
    int mFd = -1;
};

TEST_F(Muxer, SinglePictureReadsBack) {
    writeStill();
    EXPECT_EQ(off_t(file().size()), lseek(mFd, 0, SEEK_CUR));
    const Planes planes = decoded();
    EXPECT_EQ(kTile, planes.width);
    EXPECT_EQ(kTile, planes.height);
    EXPECT_NEAR(100, planes.lumaAt(32, 32), 2);
    EXPECT_THAT(file().substr(4, 24), "ftypheic\0\0\0\0mif1heicmiaf"s);
    EXPECT_THAT(file(), HasSubstr("nclx\0\5\0\15\0\5\x80"s)) << "the bitstream's colours";
    EXPECT_THAT(boxes(), Not(HasSubstr("iref")));
}

TEST_F(Muxer, GridPutsTilesInRowMajorOrderAndTrimsToOddSizes) {
    std::vector<Picture> tiles;
    for (int luma : {40, 80, 120, 160}) {
        PictureOptions options;
        options.luma = [luma](int, int) { return luma; };
        tiles.push_back(encode(options));
    }
    sp<MediaMuxer> grid = started(gridOf(tiles[0], 101, 91, 2, 2));
    for (const auto& tile : tiles) EXPECT_EQ(OK, write(grid, tile.sample));
    EXPECT_EQ(BAD_VALUE, write(grid, tiles[0].sample)) << "a fifth tile";
    EXPECT_EQ(OK, grid->stop());
    const Planes planes = decoded();
    EXPECT_EQ(101, planes.width);
    EXPECT_EQ(91, planes.height);
    EXPECT_NEAR(40, planes.lumaAt(10, 10), 2);
    EXPECT_NEAR(80, planes.lumaAt(90, 10), 2);
    EXPECT_NEAR(120, planes.lumaAt(10, 80), 2);
    EXPECT_NEAR(160, planes.lumaAt(90, 80), 2);
}

TEST_F(Muxer, LargestStillsHaveHundredsOfTilesAndFewProperties) {
    const Picture tile = encode();
    constexpr int kColumns = 32, kRows = 24;
    sp<MediaMuxer> grid = started(gridOf(tile, kColumns * kTile, kRows * kTile, kColumns, kRows));
    for (int i = 0; i < kColumns * kRows; ++i) EXPECT_EQ(OK, write(grid, tile.sample));
    EXPECT_EQ(OK, grid->stop());
    EXPECT_NEAR(100, decoded().lumaAt(kColumns * kTile - 1, kRows * kTile - 1), 2);
    EXPECT_THAT(file(), HasSubstr("dimg\3\1\3\0\0\1\0\2"s)) << "item 769 from 768 tiles";
    const std::string dump = boxes();
    size_t extents = 0;
    for (size_t at = 0; (at = dump.find("Box: ispe", at)) != std::string::npos; ++at) ++extents;
    EXPECT_EQ(2u, extents) << "one for all tiles, one for the grid";
}

TEST_F(Muxer, OddSizeIsCroppedFromTheCodedOne) {
    PictureOptions options;
    options.height = 62;
    options.luma = [](int x, int y) { return x < 63 && y < 61 ? 100 : 200; };
    writePicture(encode(options), 63, 61);
    const Planes planes = decoded();
    EXPECT_EQ(63, planes.width);
    EXPECT_EQ(61, planes.height);
    EXPECT_NEAR(100, planes.lumaAt(62, 60), 20) << "the top left was to be kept";
    EXPECT_THAT(file(), HasSubstr("ispe\0\0\0\0\0\0\0\x40\0\0\0\x3E"s)) << "the decoder's size";
}

class MuxerRotation : public Muxer, public testing::WithParamInterface<std::tuple<int, int, int>> {};

TEST_P(MuxerRotation, TurnsClockwise) {
    const auto [degrees, x, y] = GetParam();
    PictureOptions options;
    options.height = 2 * kTile;
    options.luma = [](int px, int py) { return px < 32 && py < 64 ? 200 : 50; };  // top left is bright
    const Picture picture = encode(options);
    sp<MediaMuxer> still = muxer();
    EXPECT_EQ(OK, still->setOrientationHint(degrees));
    EXPECT_EQ(0, still->addTrack(formatOf(picture, kTile, 2 * kTile)));
    EXPECT_EQ(OK, still->start());
    EXPECT_EQ(OK, write(still, picture.sample));
    EXPECT_EQ(OK, still->stop());
    const Planes planes = decoded();
    EXPECT_EQ(degrees % 180 == 0 ? kTile : 2 * kTile, planes.width);
    EXPECT_NEAR(200, planes.lumaAt(x ? planes.width - 9 : 8, y ? planes.height - 9 : 8), 5);
}
// Where the bright corner goes: right?, bottom?
INSTANTIATE_TEST_SUITE_P(Hints, MuxerRotation,
                         testing::Values(std::tuple(0, 0, 0), std::tuple(90, 1, 0), std::tuple(180, 1, 1),
                                         std::tuple(270, 0, 1)));

TEST_F(Muxer, TenBitPictureIsAHeixFile) {
    PictureOptions options;
    options.bits = 10;
    writePicture(encode(options));
    EXPECT_EQ("ftypheix", file().substr(4, 8));
    EXPECT_THAT(file(), HasSubstr("pixi\0\0\0\0\3\12\12\12"s));
    const std::string png = mFolder + "/out.png";
    EXPECT_THAT(outputOf("heif-convert " + mPath + " " + png), Not(HasSubstr("FAILED")));
    EXPECT_THAT(outputOf("exiftool -s3 -BitDepth " + png), HasSubstr("16")) << "more than 8 bits decoded";
}

TEST_F(Muxer, PictureWithoutVuiIsTakenForFullRangeSrgb) {
    PictureOptions options;
    options.vui = false;
    writePicture(encode(options));
    EXPECT_THAT(file(), HasSubstr("nclx\0\1\0\15\0\6\x80"s));
}

// One directory with one entry: Make is "Quill", at offset 26.
const std::string kTiff = "II*\0\10\0\0\0\1\0\17\1\2\0\6\0\0\0\32\0\0\0\0\0\0\0Quill\0"s;

TEST_F(Muxer, ExifIsFoundInEveryFraming) {
    const std::string marked = "Exif\0\0"s + kTiff;
    for (const std::string& sample : {kTiff, marked, "\xFF\xE1\0\x28"s + marked}) {
        lseek(mFd, 0, SEEK_SET);
        writeStill({sample});
        EXPECT_EQ("Quill\n", tags("-s3 -Make")) << sample.size() - kTiff.size() << " bytes of framing";
        EXPECT_THAT(file(), HasSubstr(std::string{0, 0, 0, char(sample.size() - kTiff.size())} + sample));
        EXPECT_THAT(boxes(), HasSubstr("cdsc"));
    }
}

TEST_F(Muxer, EmptyAndUnknownMetadataIsLeftOut) {
    writeStill({"", "neither", "Exif\0\0"s, "<?xml version='1.0'?>"});
    EXPECT_THAT(boxes(), AllOf(Not(HasSubstr("Exif")), Not(HasSubstr("mime")), Not(HasSubstr("FAILED"))));
}

TEST_F(Muxer, RepeatedParameterSetsStayOutOfTheSample) {
    PictureOptions options;
    options.repeatHeaders = true;
    const Picture picture = encode(options);
    ASSERT_THAT(picture.sample, HasSubstr(picture.codecData)) << "what this test is about";
    writePicture(picture);
    EXPECT_EQ(encode().sample.size(), firstExtent().second);
    EXPECT_NEAR(100, decoded().lumaAt(32, 32), 2);
}

TEST_F(Muxer, SamplesThatDoNotDecodeAloneAreRefused) {
    const Picture picture = encode();
    PictureOptions other;
    other.repeatHeaders = true;
    other.width = 2 * kTile;
    sp<MediaMuxer> still = started(formatOf(picture));
    const std::string trailing = "\0\0\0\1\2\1\x80"s;  // a picture that refers to others
    for (const std::string& sample : {""s, picture.sample.substr(4), trailing, picture.codecData, "\0\0\1"s}) {
        EXPECT_EQ(BAD_VALUE, write(still, sample));
    }
    EXPECT_EQ(BAD_VALUE, write(still, encode(other).sample)) << "another SPS than csd-0's";
    EXPECT_EQ(BAD_VALUE, write(still, picture.sample, 0)) << "no sync frame";
    EXPECT_EQ(BAD_VALUE, still->writeSampleData(bufferOf(picture.sample), 1, 0, 1)) << "no such track";
    EXPECT_EQ(BAD_VALUE, still->writeSampleData(nullptr, 0, 0, 1));
    EXPECT_EQ(OK, write(still, picture.codecData, BUFFER_FLAG_CODEC_CONFIG));
    EXPECT_EQ(OK, write(still, picture.sample));
}

TEST_F(Muxer, CallsOutOfOrderAreInvalidOperations) {
    const Picture picture = encode();
    sp<MediaMuxer> still = muxer();
    EXPECT_EQ(INVALID_OPERATION, still->start()) << "no track";
    EXPECT_EQ(INVALID_OPERATION, still->stop());
    EXPECT_EQ(BAD_VALUE, still->setOrientationHint(45));
    EXPECT_EQ(BAD_VALUE, still->setOrientationHint(360));
    EXPECT_EQ(0, still->addTrack(formatOf(picture)));
    EXPECT_EQ(INVALID_OPERATION, write(still, picture.sample));
    EXPECT_EQ(OK, still->start());
    EXPECT_EQ(INVALID_OPERATION, still->start());
    EXPECT_EQ(INVALID_OPERATION, still->addTrack(formatOf(picture)));
    EXPECT_EQ(INVALID_OPERATION, still->setOrientationHint(90));
    EXPECT_EQ(1, still->getTrackCount());
    EXPECT_EQ(OK, write(still, picture.sample));
    EXPECT_EQ(OK, still->stop());
    EXPECT_EQ(INVALID_OPERATION, still->stop());
    EXPECT_EQ(INVALID_OPERATION, write(still, picture.sample));
    EXPECT_EQ(-1, still->getTrackCount());
}

TEST_F(Muxer, TracksThatDoNotFitAreRefused) {
    const Picture picture = encode();
    const auto with = [&](const char* key, int32_t value) {
        sp<AMessage> format = gridOf(picture, 2 * kTile, kTile, 2, 1);
        format->setInt32(key, value);
        return format;
    };
    sp<AMessage> video = formatOf(picture), noData = formatOf(picture), halfGrid = formatOf(picture);
    video->setString("mime", "video/hevc");
    noData->setBuffer("csd-0", bufferOf(""));
    halfGrid->setInt32("grid-rows", 1);
    std::vector<sp<AMessage>> formats = {nullptr, new AMessage, video, noData, halfGrid, formatOf(picture, 65, 64)};
    for (const auto& [key, value] : {std::pair("width", 0),
                                     {"width", 129},
                                     {"height", 65},
                                     {"grid-cols", 257},
                                     {"grid-rows", -1},
                                     {"tile-width", 72}}) {
        formats.push_back(with(key, value));
    }
    sp<MediaMuxer> still = muxer();
    for (size_t i = 0; i < formats.size(); ++i) EXPECT_EQ(BAD_VALUE, still->addTrack(formats[i])) << "format " << i;
    EXPECT_EQ(0, still->getTrackCount());
}

TEST_F(Muxer, DamagedCodecDataNeverGetsThrough) {
    const Picture picture = encode();
    sp<MediaMuxer> still = muxer();
    const size_t sps = picture.codecData.find("\0\0\0\1\x42"s, 1);
    const size_t pps = picture.codecData.find("\0\0\0\1\x44"s, sps);
    ASSERT_NE(std::string::npos, pps);
    constexpr size_t kNeeded = 30;  // up to the colours; timing follows
    for (size_t kept = 5; kept < kNeeded; ++kept) {
        Picture damaged = picture;
        damaged.codecData.erase(sps + kept, pps - sps - kept);
        EXPECT_EQ(BAD_VALUE, still->addTrack(formatOf(damaged))) << kept << " bytes left of the SPS";
    }
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

TEST_F(Muxer, DescriptorsThatCannotHoldAFileAreRefused) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    const int readOnly = open(mPath.c_str(), O_RDONLY);
    for (int fd : {ends[1], readOnly, 9999}) EXPECT_EQ(nullptr, muxer(fd)) << fd;
    EXPECT_EQ(nullptr, MediaMuxer::create(mFd, MediaMuxer::OUTPUT_FORMAT_MPEG_4));
    for (int fd : {ends[0], ends[1], readOnly}) close(fd);
}

TEST_F(Muxer, WritesAtTheCurrentOffsetAndKeepsWhatIsBeforeIt) {
    const std::string before = "sixteen bytes...", after(20000, 'x');
    ASSERT_EQ(ssize_t(before.size()), ::write(mFd, before.data(), before.size()));
    ASSERT_EQ(ssize_t(after.size()), ::write(mFd, after.data(), after.size()));
    lseek(mFd, off_t(before.size()), SEEK_SET);
    writeStill();
    EXPECT_EQ(before, file().substr(0, before.size()));
    const auto [offset, length] = firstExtent();
    EXPECT_EQ(file().size(), offset + length) << "counts from the start of the file, and old data is cut off";
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

TEST_F(Muxer, MissingTilesLeaveTheFileAlone) {
    const Picture tile = encode();
    sp<MediaMuxer> grid = started(gridOf(tile, 2 * kTile, kTile, 2, 1));
    EXPECT_EQ(OK, write(grid, tile.sample));
    EXPECT_EQ(ERROR_MALFORMED, grid->stop());
    EXPECT_EQ("", file());
}

TEST_F(Muxer, FullDiskLeavesNoFileThatClaimsToBeComplete) {
    const Picture picture = encode();
    ASSERT_EQ(4, ::write(mFd, "head", 4));
    sp<MediaMuxer> still = started(formatOf(picture));
    EXPECT_EQ(OK, write(still, "Exif\0\0"s + kTiff + std::string(1000, 'x'), BUFFER_FLAG_MUXER_DATA));
    EXPECT_EQ(OK, write(still, picture.sample));
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    const rlimit tight = {500, limit.rlim_max};  // in the middle of the bodies
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &tight));
    const status_t status = still->stop();
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_EQ(ERROR_IO, status);
    EXPECT_EQ("head", file());
    EXPECT_EQ(INVALID_OPERATION, still->stop());
}

}  // namespace
