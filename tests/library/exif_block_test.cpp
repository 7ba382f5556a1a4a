// What an EXIF block says about its thumbnail, and the block with a thumbnail directory behind it.
#include <gmock/gmock.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

#include "ExifBlock.h"
#include "QuillHeifWriter.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"
#include "testing/Faults.h"

namespace {

using namespace android;
using namespace quill::test;
using testing::ElementsAre;

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;
constexpr ExifAnalysis::Outcome kNoHeader = ExifAnalysis::kNoTiffHeader;
constexpr ExifAnalysis::Outcome kLinked = ExifAnalysis::kHasIfd1;
constexpr ExifAnalysis::Outcome kOpen = ExifAnalysis::kNoIfd1;
const Bytes kExif = {'E', 'x', 'i', 'f', 0, 0};
const Bytes kApp1 = {0xFF, 0xE1, 0x04, 0x00, 'E', 'x', 'i', 'f', 0, 0};

Bytes littleEndian(uint32_t value, int bytes) {
    Bytes out;
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> 8 * i));
    return out;
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/** A TIFF header and an IFD0 of `entries` filled entries that links to `next`. */
Bytes tiff(uint32_t entries, uint32_t next, const char* byteOrder = "II") {
    return Bytes{static_cast<uint8_t>(byteOrder[0]), static_cast<uint8_t>(byteOrder[1]), 42, 0, 8, 0, 0, 0} +
           littleEndian(entries, 2) + Bytes(12 * entries, 0x77) + littleEndian(next, 4);
}

Bytes padded(Bytes block, size_t size) {
    block.resize(size, 0x33);
    return block;
}

/** The first `size` bytes of a block where the memory behind them is nobody's. */
ExifAnalysis analyse(const Bytes& block, size_t size, uint32_t initPosition = 0) {
    const std::unique_ptr<uint8_t[]> exact(new uint8_t[size]);
    if (size > 0) memcpy(exact.get(), block.data(), size);
    return analyseExifBlock({exact.get(), size}, initPosition);
}

/** The layout written out once more, entry by entry. `link`: where IFD0's link lies in the block. */
Bytes withThumbnail(Bytes block, uint32_t header, size_t link, uint8_t spare, const Bytes& jpeg) {
    const uint32_t base = static_cast<uint32_t>(block.size()) - header;
    const Bytes next = littleEndian(base + 1, 4);
    std::copy(next.begin(), next.end(), block.begin() + static_cast<ptrdiff_t>(link));
    const auto entry = [](uint32_t tag, uint32_t type, uint32_t value) {
        return littleEndian(tag, 2) + littleEndian(type, 2) + littleEndian(1, 4) + littleEndian(value, 4);
    };
    return block + Bytes{spare} + littleEndian(6, 2) + entry(0x0103, 3, 6) + entry(0x011A, 5, base + 79) +
           entry(0x011B, 5, base + 87) + entry(0x0128, 3, 2) + entry(0x0201, 4, base + 95) +
           entry(0x0202, 4, static_cast<uint32_t>(jpeg.size())) + littleEndian(0, 4) + littleEndian(72, 4) +
           littleEndian(1, 4) + littleEndian(72, 4) + littleEndian(1, 4) + jpeg;
}

Bytes appended(const Bytes& block, uint32_t header, uint8_t spare, const Bytes& jpeg) {
    Bytes out(block.size() + kThumbnailDirectorySize + jpeg.size(), spare);
    appendThumbnailDirectory({block.data(), block.size()}, header, {jpeg.data(), jpeg.size()}, out.data());
    return out;
}

/** The EXIF segment of the bundled photograph that has no thumbnail; it is the file's first. */
Bytes phoneBlock() {
    std::ifstream file(QUILL_SOURCE_DIR "/photos/phone-3264x2448.jpg", std::ios::binary);
    Bytes jpeg(1 << 16);
    file.read(reinterpret_cast<char*>(jpeg.data()), static_cast<std::streamsize>(jpeg.size()));
    const size_t size = static_cast<size_t>(jpeg.at(4) << 8 | jpeg.at(5)) - 2;
    return Bytes(jpeg.begin() + 6, jpeg.begin() + 6 + static_cast<ptrdiff_t>(size));
}

struct Answer {
    bool wanted;
    uint32_t position;
    Lines lines;
};

Answer ask(Bytes block) {
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const LogCapture log;
    uint32_t position = 0;
    const bool wanted = writer->analysisExif(block.data(), static_cast<uint32_t>(block.size()), position);
    return {wanted, position, log.of("QuillHeifWriter")};
}

TEST(ExifAnalysis, HeaderIsLookedForNearTheStart) {
    const struct {
        const char* name;
        Bytes block;
        ExifAnalysis::Outcome outcome;
        uint32_t position;
    } kCases[] = {
            {"behind Exif", kExif + tiff(3, 0), kOpen, 6},
            {"behind an APP1 marker", kApp1 + tiff(3, 0), kOpen, 10},
            {"at the first byte", tiff(3, 0), kNoHeader, 0},
            {"at the first byte, and a second one", Bytes{'I', 'I', 0, 0, 0, 0} + tiff(3, 0), kNoHeader, 0},
            {"at the second byte", Bytes{0} + tiff(3, 0), kOpen, 1},
            {"the lower of two", Bytes{0} + tiff(1, 0) + tiff(1, 9), kOpen, 1},
            {"as far as it is looked for", Bytes(18, 0) + tiff(3, 0), kOpen, 18},
            {"one byte too far", Bytes(19, 0) + tiff(3, 0), kNoHeader, 0},
            {"big-endian", kExif + tiff(3, 0, "MM"), kNoHeader, 0},
            {"with a second directory", kExif + tiff(3, 200), kLinked, 6},
            {"without entries", kExif + tiff(0, 0), kOpen, 6},
            {"more entries than bytes", kExif + Bytes{'I', 'I', 42, 0, 8, 0, 0, 0, 0xFF, 0xFF} + Bytes(500, 0),
             kNoHeader, 6},
            {"nothing at all", {}, kNoHeader, 0},
    };
    for (const auto& test : kCases) {
        const ExifAnalysis analysis = analyse(test.block, test.block.size());
        EXPECT_EQ(test.outcome, analysis.outcome) << test.name;
        EXPECT_EQ(test.position, analysis.initPosition) << test.name;

        const Answer answer = ask(test.block);
        Lines lines = {"D/AnalysisExif begin"};
        if (test.outcome == kNoHeader) lines.push_back("D/Can't find initPosition.");
        if (test.outcome == kLinked) lines.push_back("D/HAS IFD1");
        EXPECT_EQ(test.outcome == kOpen, answer.wanted) << test.name;
        EXPECT_EQ(test.position, answer.position) << test.name;
        EXPECT_EQ(lines, answer.lines) << test.name;
    }
}

TEST(ExifAnalysis, DirectoryIsTakenToFollowTheHeaderWhateverItSays) {
    Bytes block = kExif + tiff(2, 0);
    block[6 + 4] = 0x20;
    EXPECT_EQ(kOpen, analyse(block, block.size()).outcome);
}

TEST(ExifAnalysis, KnownPositionIsKeptWhenNoHeaderIsFound) {
    const Bytes block = kExif + tiff(2, 0, "MM");
    const ExifAnalysis analysis = analyse(block, block.size(), 6);
    EXPECT_EQ(kOpen, analysis.outcome);
    EXPECT_EQ(6u, analysis.initPosition);
    EXPECT_EQ(kNoHeader, analyse(block, block.size(), 0xFFFFFFFF).outcome);
}

TEST(ExifAnalysis, BlockCutShortOfItsLinkGetsNoThumbnail) {
    const Bytes block = phoneBlock();
    ASSERT_THAT(std::string(block.begin(), block.begin() + 8), testing::StartsWith(std::string("Exif\0\0II", 8)));
    const size_t linkEnd = 6 + 8 + 2 + 12 * size_t{block[6 + 8]} + 4;
    for (size_t size = 0; size <= block.size(); ++size) {
        EXPECT_EQ(size < linkEnd ? kNoHeader : kOpen, analyse(block, size).outcome) << size;
    }
}

TEST(ExifAppending, WorkedNumbers) {
    const Bytes jpeg(5000, 0xD8);
    const Bytes block = padded(kExif + tiff(4, 0), 1000);
    const size_t link = 6 + 10 + 12 * 4;
    const Bytes out = appended(block, 6, 0xEE, jpeg);
    EXPECT_EQ(6095u, out.size());
    const auto u32 = [&out](size_t at) {
        return out[at] | out[at + 1] << 8 | out[at + 2] << 16 | static_cast<uint32_t>(out[at + 3]) << 24;
    };
    EXPECT_EQ(995u, u32(link));
    EXPECT_EQ(72u, u32(6 + 1073));
    EXPECT_EQ(72u, u32(6 + 1081));
    EXPECT_EQ(0xD8, out[6 + 1089]);
    EXPECT_EQ(withThumbnail(block, 6, link, 0xEE, jpeg), out) << "the spare byte is left to the caller";
}

TEST(ExifAppending, PhonePhotographChangesInItsLinkOnly) {
    const Bytes block = phoneBlock();
    const Bytes jpeg = {0xFF, 0xD8, 0xFF, 0xD9};
    EXPECT_EQ(withThumbnail(block, 6, 6 + 10 + 12 * size_t{block[14]}, 0, jpeg), appended(block, 6, 0, jpeg));
}

TEST(ExifAppending, NoBlockMakesItReachBeyondItsBytes) {
    constexpr int kBlocks = 100000;
    std::minstd_rand random(7);
    const auto below = [&random](size_t limit) { return static_cast<size_t>(random() >> 4) % limit; };
    const Bytes seeds[] = {phoneBlock(), kExif + tiff(2, 0), kApp1 + tiff(0, 0), Bytes(18, 0) + tiff(5, 1)};
    int thumbnails = 0;
    for (int i = 0; i < kBlocks; ++i) {
        Bytes block = seeds[below(std::size(seeds))];
        if (i % 4 == 0) block.assign(below(64), 0);
        const size_t changes = i % 4 == 0 ? block.size() : below(4);
        for (size_t n = 0; n < changes && !block.empty(); ++n) {
            block[below(block.size())] = static_cast<uint8_t>(below(3) == 0 ? 'I' : below(256));
        }
        block.resize(below(8) == 0 ? below(block.size() + 1) : block.size());
        block.shrink_to_fit();
        const ExifAnalysis analysis = analyse(block, block.size(), static_cast<uint32_t>(below(2) * below(40)));
        if (analysis.outcome != kOpen) continue;
        ++thumbnails;
        const Bytes jpeg(1 + below(20), 0xD8);
        const size_t ifd0 = analysis.initPosition + 8;
        const size_t link = ifd0 + 2 + 12 * static_cast<size_t>(block.at(ifd0) | block.at(ifd0 + 1) << 8);
        ASSERT_LE(link + 4, block.size());
        ASSERT_EQ(withThumbnail(block, analysis.initPosition, link, 0, jpeg),
                  appended(block, analysis.initPosition, 0, jpeg));
    }
    EXPECT_GT(thumbnails, kBlocks / 10);
    EXPECT_LT(thumbnails, kBlocks);
}

TEST(WriterExif, PropertiesSwitchThumbnailsOff) {
    const Lines kBegun = {"D/AnalysisExif begin"}, kTooLow = {"D/system version is too low."};
    const TestDevice device("", "");
    const struct {
        const char* properties;
        bool wanted;
        Lines lines;
    } kCases[] = {
            {"", false, kTooLow},
            {"ro.build.version.quill.api=unknown", false, kTooLow},
            {"ro.build.version.quill.api=30,debug.heif.exif.thmb=1", false, kTooLow},
            {"ro.build.version.quill.api=31", true, kBegun},
            {"ro.build.version.quill.api=31,debug.heif.exif.thmb=0", true, kBegun},
            {"ro.build.version.quill.api=31,debug.heif.exif.thmb=1", false, {"D/close add thumbnail"}},
            {"ro.build.version.quill.api=31,debug.heif.exif.thmb=-1", false, {"D/close add thumbnail"}},
    };
    for (const auto& test : kCases) {
        setProperties(test.properties);
        const Answer answer = ask(kExif + tiff(3, 0));
        EXPECT_EQ(test.wanted, answer.wanted) << test.properties;
        EXPECT_EQ(test.lines, answer.lines) << test.properties;
    }
    quill::host::Faults::instance().inject("property_get", quill::host::Fault::failing(-1));
    EXPECT_FALSE(ask(kExif + tiff(3, 0)).wanted) << "a property that cannot be read is unset";
}

TEST(WriterExif, MissingBuffersAreReported) {
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    uint8_t some[64] = {};
    uint32_t size = 64;
    const LogCapture log;
    EXPECT_FALSE(writer->alterExif(nullptr, some, some, size, 6));
    EXPECT_FALSE(writer->alterExif(some, nullptr, some, size, 6));
    EXPECT_FALSE(writer->alterExif(some, some, nullptr, size, 6));
    EXPECT_EQ(64u, size);
    EXPECT_EQ(3, log.count("E/QuillHeifWriter: Invalid input parameters detected"));
    EXPECT_EQ(3u, log.lines().size());
}

}  // namespace
