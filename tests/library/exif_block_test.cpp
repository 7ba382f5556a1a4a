// What an EXIF block says about its thumbnail. The block that gets one is held by its digest.
#include <gmock/gmock.h>

#include "ExifBlock.h"
#include "Faults.h"
#include "QuillHeifWriter.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;
constexpr char kLinked[] = "D/HAS IFD1", kNoHeader[] = "D/Can't find initPosition.", kOpen[] = "";
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

struct Answer {
    bool wanted;
    uint32_t position;
    Lines lines;
};

Answer ask(Bytes block, uint32_t position = 0) {
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const LogCapture log;
    const bool wanted = writer->analysisExif(block.data(), static_cast<uint32_t>(block.size()), position);
    return {wanted, position, log.of("QuillHeifWriter")};
}

TEST(ExifAnalysis, HeaderIsLookedForNearTheStart) {
    const struct {
        const char* name;
        Bytes block;
        std::string outcome;
        uint32_t position;
        uint32_t known = 0;  ///< where a header that is not found is taken to be
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
            {"big-endian, where it is known to be", kExif + tiff(3, 0, "MM"), kOpen, 6, 6},
            {"known to be nowhere", kExif + tiff(3, 0, "MM"), kNoHeader, UINT32_MAX, UINT32_MAX},
            {"with a second directory", kExif + tiff(3, 200), kLinked, 6},
            {"without entries", kExif + tiff(0, 0), kOpen, 6},
            {"with an IFD0 elsewhere, it says", kExif + Bytes{'I', 'I', 42, 0, 32, 0, 0, 0} + Bytes(6, 0), kOpen, 6},
            {"more entries than bytes", kExif + Bytes{'I', 'I', 42, 0, 8, 0, 0, 0, 0xFF, 0xFF} + Bytes(500, 0),
             kNoHeader, 6},
            {"nothing at all", {}, kNoHeader, 0},
    };
    for (const auto& test : kCases) {
        const Answer answer = ask(test.block, test.known);
        Lines lines = {"D/AnalysisExif begin", test.outcome};
        if (test.outcome == kOpen) lines.pop_back();
        EXPECT_EQ(test.outcome == kOpen, answer.wanted) << test.name;
        EXPECT_EQ(test.position, answer.position) << test.name;
        EXPECT_EQ(lines, answer.lines) << test.name;
    }
}

TEST(ExifAnalysis, BlockCutShortOfItsLinkGetsNoThumbnail) {
    Bytes block = kExif + tiff(3, 0);
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    for (uint32_t size = 0; size <= block.size(); ++size) {
        uint32_t position = 0;
        EXPECT_EQ(size == block.size(), writer->analysisExif(block.data(), size, position)) << size;
    }
}

TEST(ExifBlock, CountThatGrowsBehindTheAnalysisIsNotFollowed) {
    Bytes block = kExif + tiff(3, 0);
    const ExifAnalysis analysis = analyseExifBlock({block.data(), block.size()}, 0);
    block[kExif.size() + 8] = 0xFF;  // the app's array is the app's
    block[kExif.size() + 9] = 0xFF;
    const Bytes jpeg(100, 1);
    Bytes out(block.size() + kThumbnailDirectorySize + jpeg.size());
    const ExifBytes thumbnail{jpeg.data(), jpeg.size()};
    EXPECT_FALSE(appendThumbnailDirectory({block.data(), block.size()}, analysis.initPosition, thumbnail, out.data()));
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
