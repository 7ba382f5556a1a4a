// What the codec is asked for: component, format keys, surface.
#include <gmock/gmock.h>

#include <algorithm>

#include "CallLog.h"
#include "Faults.h"
#include "QuillHeifEncoder.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::CallLog;
using testing::ElementsAre;

constexpr char kQti[] = "c2.qti.hevc.encoder", kMtk[] = "c2.mtk.hevc.encoder";

/** A hardware encoder of no name leaves the choice to the platform, which takes the first of its list. */
const std::string kChosenByType = xml({"c2.first.hevc", "64x64-4096x4096", "", "video/hevc", false}) + xml({""});

std::string named(const std::string& component) { return xml({component, "64x64-8192x8192"}); }

struct Order {
    std::string codecs;
    int width, height;
    int format;
    int quality = 95;
    std::string properties = "debug.quill.video.log.enable=4";
};

/** An encoder's own lines, then "KEY=VALUE": the result, its surface's settings and its codec's. */
std::vector<std::string> setUp(const Order& order) {
    return cutIntoLines(inChild([&] {
        const TestDevice device(order.codecs, order.properties);
        const LogCapture log;
        CallLog::instance().start();
        const sp<QuillHeifEncoder> encoder =
                new QuillHeifEncoder(order.width, order.height, order.width, order.height, order.format, order.quality);
        const status_t status = encoder->initializeCodec();
        std::string text = joined(log.of("QuillHeifEncoder")) + "status=" + std::to_string(status) + "\n";
        for (const auto& [key, call] : {std::pair("geometry=", "ANativeWindow_setBuffersGeometry"),
                                        {"usage=", "native_window_set_usage"},
                                        {"", "MediaCodec::configure"}}) {
            for (const std::string& arguments : CallLog::instance().of(call)) text += key + arguments + "\n";
        }
        encoder->close();
        return text.substr(0, text.find_last_not_of('\n') + 1);
    }));
}

/** The values of `keys`, "-" for one that is not set. */
std::string configured(const Order& order, std::initializer_list<const char*> keys) {
    const std::vector<std::string> items = setUp(order);
    std::string values;
    for (const std::string key : keys) {
        const auto item = std::find_if(items.begin(), items.end(),
                                       [&](const std::string& text) { return text.rfind(key + "=", 0) == 0; });
        values += (values.empty() ? "" : " ") + (item == items.end() ? "-" : item->substr(key.size() + 1));
    }
    return values;
}

TEST(EncoderSetup, AllKeysOfAGridAndOfAWholeFrame) {
    EXPECT_THAT(setUp({named("c2.x"), 4000, 3000, FORMAT_NV12}),
                ElementsAre("status=0", "mime=video/hevc", "width=512", "height=512", "tile-width=512",
                            "tile-height=512", "grid-cols=8", "grid-rows=6", "i-frame-interval=0", "color-format=21",
                            "color-standard=2", "color-range=1", "color-transfer=2", "frame-rate=30",
                            "capture-rate=1440", "operating-rate=2147483647", "bitrate-mode=0", "quality=95"));
    EXPECT_THAT(setUp({named("c2.x"), 512, 300, FORMAT_I420, 7}),
                ElementsAre("status=0", "mime=video/hevc", "width=512", "height=300", "i-frame-interval=0",
                            "color-format=19", "color-standard=2", "color-range=1", "color-transfer=2", "frame-rate=30",
                            "capture-rate=30", "operating-rate=2147483647", "bitrate-mode=0", "quality=7"));
}

TEST(EncoderSetup, RateFollowsComponent) {
    const struct {
        std::string codecs;
        int width, height, quality;
        const char* rate;
    } kCases[] = {
            {kChosenByType, 4000, 3000, 100, "2 12045600 - 1440 2147483647"},
            // Each by a bit more or less where the factors come in another order.
            {kChosenByType, 80, 4375, 70, "2 245931 - 270 2147483647"},
            {kChosenByType, 80, 5750, 100, "2 461748 - 360 2147483647"},
            {kChosenByType, 80, 3750, 55, "2 165627 - 240 2147483647"},
            {named(kMtk), 4000, 3000, 100, "2 40000000 - - 30"},
            {named("c2.mtk.hevc.encoder.heif"), 8000, 6000, 100, "2 48182400 - - 30"},
            {named(kMtk), 8000, 6000, 1 << 30, "2 2147483647 - - 30"},
            {named(kQti), 8000, 6000, 100, "0 - 100 5760 2147483647"},
            {named("c2.mtk.hevc.encode"), 512, 512, 0, "0 - 0 30 2147483647"},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.rate, configured({test.codecs, test.width, test.height, FORMAT_NV12, test.quality},
                                        {"bitrate-mode", "bitrate", "quality", "capture-rate", "operating-rate"}))
                << test.codecs;
    }
}

TEST(EncoderSetup, ColorFormatProfileAndSurfaceFollowFormat) {
    constexpr char kSurface[] = "2130708361 - 512 512 1 51";
    const struct {
        std::string component;
        int format;
        std::string chip, expected;
    } kCases[] = {
            {"c2.x", FORMAT_NV21, "SM8550", "21 - - -"},
            {"c2.x", FORMAT_RGBA8888, "SM8550", kSurface},
            {kQti, FORMAT_RGBA8888, "", kSurface},
            {"c2.x", FORMAT_P010, "sm8550", "2141391882 2 - -"},
            {"c2.x", FORMAT_P010, "MT6989", "2141391882 - - -"},
            {kQti, FORMAT_P010, "SM8351", "2130708361 2 512 512 54 51"},
            {kQti, FORMAT_P010, "sm8350-AC", "2130708361 2 512 512 2141391882 51"},
            {"c2.qti.hevc.encoder.cq", FORMAT_P010, "SM", "2130708361 2 512 512 54 51"},
            {"c2.qti.hevc.encode", FORMAT_P010, "S", "2141391882 - - -"},
            {kMtk, FORMAT_P010, "SM8550", "2130708361 - 512 512 54 51"},
            {kMtk, FORMAT_P010, "", "2130708361 - 512 512 54 51"},
    };
    for (const auto& test : kCases) {
        const Order order{named(test.component), 300, 200, test.format, 95, "ro.soc.model=" + test.chip};
        EXPECT_EQ(test.expected, configured(order, {"color-format", "profile", "geometry", "usage"}))
                << test.component << " " << test.chip;
    }
}

TEST(EncoderSetup, StepsAndRefusalsAreLogged) {
    std::vector<std::string> lines = setUp({named(kQti), 600, 500, FORMAT_P010, 90, "ro.soc.model=SM8550\n"});
    lines.resize(5);
    EXPECT_THAT(lines, ElementsAre("I/width: 600, height: 500, stride: 600 X 500 fmt: 1 quality: 90",
                                   "I/createCodec Create HEVC Codec", "I/Codec name:c2.qti.hevc.encoder",
                                   "I/Creating input surface for encode.", "I/Surface color-format: 54"));
    EXPECT_THAT(setUp({"", 640, 480, FORMAT_NV12}),
                ElementsAre("E/createCodec: Encoder doesnt' support size 640 x 480!",
                            "E/Failed to create codec: Invalid argument (-22)", "status=-19"));
}

TEST(EncoderSetup, RefusalOfTheCodecIsTheResult) {
    quill::host::Faults::instance().inject("MediaCodec::configure", quill::host::Fault::failing(-38));
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(64, 64, 64, 64, FORMAT_NV12, 95);
    EXPECT_EQ(-38, encoder->initializeCodec());
    encoder->close();
}

}  // namespace
