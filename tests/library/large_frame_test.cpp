// The largest frame there is: 201 megapixels in 768 tiles.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <cstring>

#include "Clock.h"
#include "support/HeifReader.h"
#include "support/LogCapture.h"
#include "support/Still.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

constexpr Geometry kLarge{16384, 12288, 16384, 12288};
constexpr double kPatience = 20;  // the frame's 10 s in 200: a workstation codes more slowly than a phone's encoder

/** Cheap to fill and to code: a different level for each tile, so that a tile in the wrong place would show. */
CameraFrame tiledLevels() {
    CameraFrame frame{kLarge, FORMAT_NV12, std::vector<uint8_t>(frameBytes(FORMAT_NV12, kLarge), 128), {}};
    for (int row = 0; row < kLarge.height; ++row) {
        for (int column = 0; column < kLarge.width / 512; ++column) {
            const int level = 16 + (row / 512 * 7 + column * 5) % 220;
            memset(&frame.bytes[static_cast<size_t>(row) * kLarge.stride + 512 * column], level, 512);
        }
    }
    return frame;
}

TEST(LargeFrame, TwoHundredMegapixelsAreOneImage) {
    setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
    Clock::instance().setScale(kPatience);
    const LogCapture log;
    Still still(tiledLevels(), 40);
    ASSERT_EQ(0, still.write());
    EXPECT_TRUE(log.has("D/QuillHeifWriter: encoded output buffers size, 768"));
    const ReadStill read = readStill(still.file.path(), false);
    EXPECT_EQ("", read.error);
    EXPECT_EQ(kLarge.width, read.shownWidth);
    EXPECT_EQ(kLarge.height, read.shownHeight);
    EXPECT_EQ(1, read.topLevelImages);
    EXPECT_EQ(0, system(("heif-info " + still.file.path()).c_str())) << "heif-info does not open it";
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    RecordProperty("peak_kilobytes", static_cast<int>(usage.ru_maxrss));
}

}  // namespace
