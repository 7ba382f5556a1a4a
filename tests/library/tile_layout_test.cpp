// Tiles at the limits, and what is said of them. What each tile holds is the matter of fuzz/tile_layout.cpp.
#include <gmock/gmock.h>

#include <vector>

#include "QuillHeifEncoder.h"
#include "StatusNames.h"
#include "TileLayout.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0x5A;

TEST(TileLayout, OffsetsBeyondTwoGigabytesAreRight) {
    const FrameGeometry large{30000, 30000, 20000};
    const TileArea last = tileArea(large, 59 * 40 - 1);
    EXPECT_EQ(2ll * (30000ll * 512 * 39 + 512 * 58), p010TileCopies(large, last).planes[0].sourceOffset);
    EXPECT_EQ(4ll * (30000ll * 512 * 39 + 512 * 58), rgbaTileCopies(large, last, 512).planes[0].sourceOffset);
}

TEST(TileLayout, TileBelowTheFrameIsEmpty) {
    Bytes tile(kTileBytesYuv8, kUntouched), frame(8);
    const FrameGeometry flat{512, 512, 512};
    copyTile(tile.data(), frame.data(), nv12TileCopies(flat, tileArea(flat, 1)));
    copyTile(tile.data(), frame.data(), i420TileCopies(flat, tileArea(flat, 2)));
    EXPECT_THAT(tile, testing::Each(kUntouched));
}

TEST(TileLayout, UnknownFormatLogsAndCopiesNothing) {
    const LogCapture log;
    Bytes tile(16, kUntouched);
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(512, 512, 512, 512, 5, 95);
    EXPECT_EQ(0, encoder->fillInputBuffer(tile.data(), nullptr, 0, 512));
    EXPECT_EQ(log.lines().back(), "E/QuillHeifEncoder: fillInputBuffer: Color fmt not support 5.");
    EXPECT_THAT(tile, testing::Each(kUntouched));
}

TEST(TileLayout, BitsPerPixelFollowFormat) {
    EXPECT_EQ(32, getBitsPerPixel(FORMAT_RGBA8888));
    EXPECT_EQ(24, getBitsPerPixel(FORMAT_P010));
    for (const int other : {0, 3, 4, 7, -1}) EXPECT_EQ(12, getBitsPerPixel(other)) << other;
}

TEST(WholeFrameTiling, TwoVerbosityRules) {
    const std::pair<const char*, char> kLines[] = {{"D/splitYuvData enter", '5'},      {"D/splitYuvData end", '5'},
                                                   {"V/split10BitYuvData enter", '6'}, {"V/split10BitYuvData end", '6'},
                                                   {"I/align 2*2 to 4*4", '5'},        {"V/bufferAlign leave", '6'}};
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(2, 2, 2, 2, FORMAT_P010, 95);
    Bytes frame(64), out(256);
    for (const auto& [level, from] : {std::pair("", '5'), {"4", '4'}, {"5", '5'}, {"6", '6'}, {"none", '0'}}) {
        setProperties(std::string("debug.quill.video.log.enable=") + level);
        const LogCapture log;
        encoder->splitYuvData(frame.data(), 2, 2, out.data());
        encoder->split10BitYuvData(frame.data(), 2, 2, out.data());
        encoder->bufferAlign(frame.data(), 2, 2, 4, 4, out.data());
        std::vector<std::string> expected;
        for (const auto& [line, least] : kLines) {
            if (from >= least) expected.push_back(line);
        }
        EXPECT_EQ(expected, log.of("QuillHeifEncoder")) << level;
    }
}

TEST(StatusNames, EveryStatusHasItsName) {
    const std::pair<status_t, const char*> kNames[] = {
            {0, "NO_ERROR"},
            {INT32_MIN, "UNKNOWN_ERROR"},
            {-12, "NO_MEMORY"},
            {-38, "INVALID_OPERATION"},
            {-22, "BAD_VALUE"},
            {-2147483647, "BAD_TYPE"},
            {-2, "NAME_NOT_FOUND"},
            {-1, "PERMISSION_DENIED"},
            {-19, "NO_INIT"},
            {-17, "ALREADY_EXISTS"},
            {-32, "DEAD_OBJECT"},
            {-2147483646, "FAILED_TRANSACTION"},
            {-75, "BAD_INDEX"},
            {-61, "NOT_ENOUGH_DATA"},
            {-11, "WOULD_BLOCK"},
            {-110, "TIMED_OUT"},
            {-74, "UNKNOWN_TRANSACTION"},
            {-2147483641, "FDS_NOT_ALLOWED"},
            {-3, "??"},
            {1, "??"},
            {-1014, "??"},
    };
    for (const auto& [status, name] : kNames) EXPECT_STREQ(name, statusName(status)) << status;
}

}  // namespace
