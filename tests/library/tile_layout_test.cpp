// Tiles at the limits, and what is logged of them. What each tile holds is held by digests.
#include <gtest/gtest.h>

#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"
#include "StatusNames.h"
#include "TileLayout.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;

TEST(TileLayout, LastTileOfWholeColumnsLiesBeyondTwoGigabytes) {
    const FrameGeometry large{29696, 20000, 30000, 20000};
    const TileCopies last = tileCopies(*findFrameFormat(FORMAT_RGBA8888), large, tileArea(large, 58 * 40 - 1));
    EXPECT_EQ(4ll * (30000ll * 512 * 39 + 512 * 57), last.planes[0].sourceOffset);
}

TEST(UnknownFormat, IsLoggedAndNothingCopied) {
    const LogCapture log;
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(512, 512, 512, 512, 5, 95);
    EXPECT_EQ(0, encoder->fillInputBuffer(nullptr, nullptr, 0, 512));
    EXPECT_EQ(log.lines().back(), "E/QuillHeifEncoder: fillInputBuffer: Color fmt not support 5.");
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    writer->initEncoder(7, 5, 7, 6, 7, 95, 0);
    EXPECT_EQ(-1, writer->saveYuvBuf(nullptr, nullptr));
    EXPECT_EQ(log.lines().back(), "E/QuillHeifWriter: saveYuvBuf: Color fmt not support 7.");
    writer->close();
}

TEST(TileLayout, BitsPerPixelFollowFormat) {
    EXPECT_EQ(32, getBitsPerPixel(FORMAT_RGBA8888));
    EXPECT_EQ(24, getBitsPerPixel(FORMAT_P010));
    for (const int other : {0, 3, 4, 7, -1}) EXPECT_EQ(12, getBitsPerPixel(other)) << other;
}

TEST(WholeFrameTiling, TwoVerbosityRules) {
    using Lines = std::vector<std::string>;
    const Lines kMany = {"D/splitYuvData enter",    "D/splitYuvData end", "V/split10BitYuvData enter",
                         "V/split10BitYuvData end", "I/align 2*2 to 4*4", "V/bufferAlign leave"};
    const Lines kFew = {kMany[0], kMany[1], kMany[4]};
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(2, 2, 2, 2, FORMAT_P010, 95);
    uint8_t frame[64] = {}, out[256];
    for (const auto& [level, lines] : {std::pair("", kFew), {"4", {}}, {"5", kFew}, {"6", kMany}, {"none", {}}}) {
        setProperties(std::string("debug.quill.video.log.enable=") + level);
        const LogCapture log;
        encoder->splitYuvData(frame, 2, 2, out);
        encoder->split10BitYuvData(frame, 2, 2, out);
        encoder->bufferAlign(frame, 2, 2, 4, 4, out);
        EXPECT_EQ(lines, log.of("QuillHeifEncoder")) << level;
    }
}

TEST(StatusNames, EveryStatusHasItsName) {
    std::string names;
    for (const status_t status : {0,           INT32_MIN, -12, -38, -22,  -2147483647, -2,          -1, -19, -17,  -32,
                                  -2147483646, -75,       -61, -11, -110, -74,         -2147483641, -3, 1,   -1014}) {
        names += std::string(statusName(status)) + " ";
    }
    EXPECT_EQ(
            "NO_ERROR UNKNOWN_ERROR NO_MEMORY INVALID_OPERATION BAD_VALUE BAD_TYPE NAME_NOT_FOUND PERMISSION_DENIED "
            "NO_INIT ALREADY_EXISTS DEAD_OBJECT FAILED_TRANSACTION BAD_INDEX NOT_ENOUGH_DATA WOULD_BLOCK TIMED_OUT "
            "UNKNOWN_TRANSACTION FDS_NOT_ALLOWED ?? ?? ?? ",
            names);
}

}  // namespace
