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
using namespace std::string_literals;
using quill::host::Faults;

constexpr auto kOpen = ExifAnalysis::kNoIfd1, kLinked = ExifAnalysis::kHasIfd1, kNoHeader = ExifAnalysis::kNoTiffHeader;
const std::string kExif = "Exif\0\0"s, kApp1 = "\xFF\xE1\4\0"s + kExif;

/** A TIFF header and an IFD0 of `entries` filled entries that links to `next`. */
std::string tiff(char entries, char next, const std::string& byteOrder = "II") {
    const std::string filled(12 * static_cast<size_t>(entries), 'w');
    return byteOrder + "\x2A\0\x08\0\0\0"s + entries + '\0' + filled + next + "\0\0\0"s;
}

ExifBytes bytesOf(const std::string& text) { return {reinterpret_cast<const uint8_t*>(text.data()), text.size()}; }

TEST(ExifAnalysis, HeaderIsLookedForNearTheStart) {
    const struct {
        const char* name;
        std::string block;
        ExifAnalysis::Outcome outcome;
        uint32_t position;
        uint32_t known = 0;  ///< where a header that is not found is taken to be
    } kCases[] = {
            {"behind Exif", kExif + tiff(3, 0), kOpen, 6},
            {"behind an APP1 marker", kApp1 + tiff(3, 0), kOpen, 10},
            {"at the first byte", tiff(3, 0), kNoHeader, 0},
            {"at the first byte, and a second one", "II\0\0\0\0"s + tiff(3, 0), kNoHeader, 0},
            {"at the second byte", "\0"s + tiff(3, 0), kOpen, 1},
            {"the lower of two", "\0"s + tiff(1, 0) + tiff(1, 9), kOpen, 1},
            {"as far as it is looked for", std::string(18, 0) + tiff(3, 0), kOpen, 18},
            {"one byte too far", std::string(19, 0) + tiff(3, 0), kNoHeader, 0},
            {"big-endian", kExif + tiff(3, 0, "MM"), kNoHeader, 0},
            {"big-endian, where it is known to be", kExif + tiff(3, 0, "MM"), kOpen, 6, 6},
            {"known to be nowhere", kExif + tiff(3, 0, "MM"), kNoHeader, UINT32_MAX, UINT32_MAX},
            {"with a second directory", kExif + tiff(3, 100), kLinked, 6},
            {"without entries", kExif + tiff(0, 0), kOpen, 6},
            {"with an IFD0 elsewhere, it says", kExif + "II\x2A\0\x20\0\0\0\0\0\0\0\0\0"s, kOpen, 6},
            {"more entries than bytes", kExif + "II\x2A\0\x08\0\0\0\xFF\xFF"s + std::string(500, 0), kNoHeader, 6},
            {"nothing at all", "", kNoHeader, 0},
    };
    for (const auto& test : kCases) {
        const ExifAnalysis analysis = analyseExifBlock(bytesOf(test.block), test.known);
        EXPECT_EQ(test.outcome, analysis.outcome) << test.name;
        EXPECT_EQ(test.position, analysis.initPosition) << test.name;
    }
}

TEST(ExifAnalysis, BlockCutShortOfItsLinkGetsNoThumbnail) {
    const std::string block = kExif + tiff(3, 0);
    for (size_t size = 0; size <= block.size(); ++size) {
        EXPECT_EQ(size == block.size() ? kOpen : kNoHeader, analyseExifBlock({bytesOf(block).data, size}, 0).outcome);
    }
}

TEST(ExifBlock, CountThatGrowsBehindTheAnalysisIsNotFollowed) {
    std::string block = kExif + tiff(3, 0);
    ASSERT_EQ(kOpen, analyseExifBlock(bytesOf(block), 0).outcome);
    block.replace(kExif.size() + 8, 2, "\xFF\xFF");  // the app's array is the app's
    std::vector<uint8_t> out(block.size() + kThumbnailDirectorySize);
    EXPECT_FALSE(appendThumbnailDirectory(bytesOf(block), kExif.size(), {nullptr, 0}, out.data()));
}

TEST(WriterExif, OutcomeAndPropertiesDecide) {
    const TestDevice device("", "");
    const std::string kApi31 = "ro.build.version.quill.api=31", kThumbnails = ",debug.heif.exif.thmb=";
    const std::string kTooLow = "system version is too low.";
    const struct {
        std::string properties, line;
        std::string block = kExif + tiff(3, 0);
    } kCases[] = {
            {"", kTooLow},
            {"ro.build.version.quill.api=unknown", kTooLow},
            {"ro.build.version.quill.api=30" + kThumbnails + "1", kTooLow},
            {kApi31, "AnalysisExif begin"},
            {kApi31 + kThumbnails + "0", "AnalysisExif begin"},
            {kApi31 + kThumbnails + "1", "close add thumbnail"},
            {kApi31 + kThumbnails + "-1", "close add thumbnail"},
            {kApi31, "HAS IFD1", kExif + tiff(3, 100)},
            {kApi31, "Can't find initPosition.", ""},
    };
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const auto isWanted = [&](std::string block) {
        uint32_t position = 0;
        return writer->analysisExif(reinterpret_cast<uint8_t*>(block.data()), block.size(), position) && position == 6;
    };
    const LogCapture log;
    for (const auto& test : kCases) {
        setProperties(test.properties);
        EXPECT_EQ(test.line == "AnalysisExif begin", isWanted(test.block)) << test.properties;
        EXPECT_EQ("D/QuillHeifWriter: " + test.line, log.lines().back()) << test.properties;
    }
    Faults::instance().reset();
    Faults::instance().inject("property_get", quill::host::Fault::failing(-1));
    EXPECT_FALSE(isWanted(kExif + tiff(3, 0))) << "a property that cannot be read is unset";
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
    EXPECT_EQ(std::vector<std::string>(3, "E/QuillHeifWriter: Invalid input parameters detected"), log.lines());
}

}  // namespace
