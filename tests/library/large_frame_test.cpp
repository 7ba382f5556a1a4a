// The largest frame there is: 201 megapixels in 768 tiles. Where it is watched, two rows of them.
#include <gmock/gmock.h>
#include <string.h>

#include <map>

#include "Clock.h"
#include "support/HeifReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"
#include "support/Watched.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

const int kColumns = 32, kRows = isWatched() ? 2 : 24, kTiles = kColumns * kRows;
const Geometry kLarge{512 * kColumns, 512 * kRows, 512 * kColumns, 512 * kRows};
constexpr double kPatience = 20;  // the frame's 10 s in 200: a workstation codes more slowly than a phone's encoder

int levelOf(int tile) { return 16 + (tile / kColumns * 7 + tile % kColumns * 5) % 220; }

/** Cheap to fill and to code: a level for each tile, so that a tile in the wrong place shows. */
CameraFrame tiledLevels() {
    CameraFrame frame{kLarge, FORMAT_NV12, std::vector<uint8_t>(frameBytes(FORMAT_NV12, kLarge), 128), {}};
    for (int row = 0; row < kLarge.height; ++row) {
        for (int column = 0; column < kColumns; ++column) {
            const int level = levelOf(row / 512 * kColumns + column);
            memset(&frame.bytes[static_cast<size_t>(row) * kLarge.stride + 512 * column], level, 512);
        }
    }
    return frame;
}

/** The data of the coded pictures in a file's `mdat`, which comes last. */
std::vector<std::string> unitsIn(const std::vector<uint8_t>& file) {
    const std::string text(file.begin(), file.end());
    std::vector<std::string> units;
    constexpr size_t kSliceHeader = 6;  // with the picture's number
    size_t length = 0;
    for (size_t at = text.find("mdat") + 4; at + 4 <= text.size(); at += length) {
        length = size_t{file[at]} << 24 | file[at + 1] << 16 | file[at + 2] << 8 | file[at + 3];
        units.push_back(text.substr((at += 4) + kSliceHeader, length - kSliceHeader));
    }
    return units;
}

TEST(LargeFrame, TwoHundredMegapixelsAreOneImage) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    Clock::instance().setScale(kPatience);
    const LogCapture log;
    Still still(tiledLevels());
    ASSERT_EQ(0, still.write());
    EXPECT_TRUE(log.has("D/QuillHeifWriter: encoded output buffers size, " + std::to_string(kTiles)));
    const ReadStill read = readStill(still.file.path(), false);
    EXPECT_EQ("", read.error);
    EXPECT_EQ(kLarge.width, read.shownWidth);
    EXPECT_EQ(kLarge.height, read.shownHeight);
    EXPECT_EQ(1, read.topLevelImages);
    // A picture of one level is coded alike wherever it is.
    const std::vector<std::string> units = unitsIn(still.file.bytes());
    ASSERT_EQ(static_cast<size_t>(kTiles), units.size());
    std::map<int, std::string> codes;
    std::map<std::string, int> levels;
    for (int tile = 0; tile < kTiles; ++tile) {
        EXPECT_EQ(units[tile], codes.emplace(levelOf(tile), units[tile]).first->second) << tile;
        EXPECT_EQ(levelOf(tile), levels.emplace(units[tile], levelOf(tile)).first->second) << tile;
    }
}

}  // namespace
