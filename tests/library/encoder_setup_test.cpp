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
using quill::host::Fault;
using quill::host::Faults;
using testing::ElementsAre;

constexpr char kTag[] = "QuillHeifEncoder";
constexpr char kQti[] = "c2.qti.hevc.encoder";
constexpr char kMtk[] = "c2.mtk.hevc.encoder";

/** A hardware encoder of no name leaves the choice to the platform, which takes the first of its list. */
const std::string kChosenByType = xml({"c2.first.hevc", "64x64-4096x4096", "", "video/hevc", false}) + xml({""});

std::string named(const std::string& component) { return xml({component, "64x64-8192x8192"}); }

struct Order {
    std::string codecs;
    int width, height;
    int format;
    int quality = 95;
    std::string properties = "";
};

/** Configures an encoder in a process of its own and gives back `report`'s text. */
std::string afterSetup(const Order& setup, const std::function<std::string(const LogCapture&, status_t)>& report) {
    return inChild([&] {
        const TestDevice device(setup.codecs, setup.properties);
        const LogCapture log;
        CallLog::instance().start();
        const sp<QuillHeifEncoder> encoder =
                new QuillHeifEncoder(setup.width, setup.height, setup.width, setup.height, setup.format, setup.quality);
        const status_t status = encoder->initializeCodec();
        std::string text = report(log, status);
        encoder->close();
        return text;
    });
}

std::vector<std::string> configuredKeys(const Order& setup) {
    return cutIntoLines(afterSetup(setup, [](const LogCapture&, status_t) {
        const std::vector<std::string> calls = CallLog::instance().of("MediaCodec::configure");
        return calls.empty() ? "not configured" : calls.front();
    }));
}

TEST(EncoderSetup, AllKeysOfAGrid) {
    EXPECT_THAT(configuredKeys({named("c2.x"), 4000, 3000, FORMAT_NV12}),
                ElementsAre("mime=video/hevc", "width=512", "height=512", "tile-width=512", "tile-height=512",
                            "grid-cols=8", "grid-rows=6", "i-frame-interval=0", "color-format=21", "color-standard=2",
                            "color-range=1", "color-transfer=2", "frame-rate=30", "capture-rate=1440",
                            "operating-rate=2147483647", "bitrate-mode=0", "quality=95"));
}

TEST(EncoderSetup, AllKeysOfAWholeFrame) {
    EXPECT_THAT(configuredKeys({named("c2.x"), 512, 300, FORMAT_I420, 7}),
                ElementsAre("mime=video/hevc", "width=512", "height=300", "i-frame-interval=0", "color-format=19",
                            "color-standard=2", "color-range=1", "color-transfer=2", "frame-rate=30", "capture-rate=30",
                            "operating-rate=2147483647", "bitrate-mode=0", "quality=7"));
}

/** The values of `keys`, "-" for one that is not set. */
std::string configured(const Order& setup, std::initializer_list<const char*> keys) {
    const std::vector<std::string> items = configuredKeys(setup);
    std::string values;
    for (const std::string key : keys) {
        const auto item = std::find_if(items.begin(), items.end(),
                                       [&](const std::string& text) { return text.rfind(key + "=", 0) == 0; });
        values += (values.empty() ? "" : " ") + (item == items.end() ? "-" : item->substr(key.size() + 1));
    }
    return values;
}

TEST(EncoderSetup, RateFollowsComponent) {
    const std::pair<Order, const char*> kCases[] = {
            {{kChosenByType, 4000, 3000, FORMAT_NV12, 100}, "2 12045600 - 1440 2147483647"},
            {{kChosenByType, 4096, 3072, FORMAT_NV12, 95}, "2 11999190 - 1440 2147483647"},
            // Each by a bit more or less where the factors come in another order.
            {{kChosenByType, 80, 4375, FORMAT_NV12, 70}, "2 245931 - 270 2147483647"},
            {{kChosenByType, 80, 5750, FORMAT_NV12, 100}, "2 461748 - 360 2147483647"},
            {{kChosenByType, 80, 3750, FORMAT_NV12, 55}, "2 165627 - 240 2147483647"},
            {{named(kMtk), 4000, 3000, FORMAT_NV12, 100}, "2 40000000 - - 30"},
            {{named(kMtk), 8000, 6000, FORMAT_NV12, 100}, "2 48182400 - - 30"},
            {{named("c2.mtk.hevc.encoder.heif"), 8000, 6000, FORMAT_NV12, 100}, "2 48182400 - - 30"},
            {{named(kMtk), 8000, 6000, FORMAT_NV12, 1 << 30}, "2 2147483647 - - 30"},
            {{named(kQti), 8000, 6000, FORMAT_NV12, 100}, "0 - 100 5760 2147483647"},
            {{named("c2.mtk.hevc.encode"), 512, 512, FORMAT_NV12, 0}, "0 - 0 30 2147483647"},
    };
    for (const auto& [setup, rate] : kCases) {
        EXPECT_EQ(rate, configured(setup, {"bitrate-mode", "bitrate", "quality", "capture-rate", "operating-rate"}))
                << setup.codecs;
    }
}

TEST(EncoderSetup, ColorFormatAndProfileFollowFormat) {
    const std::string kSurface = "2130708361", kVendorP010 = "2141391882";
    const std::pair<Order, std::string> kCases[] = {
            {{named("c2.x"), 512, 512, FORMAT_NV21, 95, "ro.soc.model=SM8550"}, "21 -"},
            {{named("c2.x"), 512, 512, FORMAT_RGBA8888, 95, "ro.soc.model=SM8550"}, kSurface + " -"},
            {{named("c2.x"), 512, 512, FORMAT_P010, 95, "ro.soc.model=sm8550"}, kVendorP010 + " 2"},
            {{named("c2.x"), 512, 512, FORMAT_P010, 95, "ro.soc.model=MT6989"}, kVendorP010 + " -"},
            {{named("c2.x"), 512, 512, FORMAT_P010, 95, ""}, kVendorP010 + " -"},
            {{named(kQti), 512, 512, FORMAT_P010, 95, "ro.soc.model=SM8550"}, kSurface + " 2"},
            {{named("c2.qti.hevc.encoder.cq"), 512, 512, FORMAT_P010, 95, "ro.soc.model=SM"}, kSurface + " 2"},
            {{named("c2.qti.hevc.encode"), 512, 512, FORMAT_P010, 95, "ro.soc.model=S"}, kVendorP010 + " -"},
            {{named(kMtk), 512, 512, FORMAT_P010, 95, "ro.soc.model=SM8550"}, kSurface + " -"},
    };
    for (const auto& [setup, expected] : kCases) {
        EXPECT_EQ(expected, configured(setup, {"color-format", "profile"})) << setup.codecs << setup.properties;
    }
}

TEST(EncoderSetup, SurfaceIsOneTileInTheRightFormat) {
    const struct {
        Order setup;
        std::string geometry;
    } kCases[] = {
            {{named("c2.x"), 300, 200, FORMAT_RGBA8888}, "512 512 1"},
            {{named(kQti), 4000, 3000, FORMAT_RGBA8888}, "512 512 1"},
            {{named(kQti), 4000, 3000, FORMAT_P010, 95, "ro.soc.model=SM8550"}, "512 512 54"},
            {{named(kQti), 4000, 3000, FORMAT_P010, 95, "ro.soc.model=sm8350-AC"}, "512 512 2141391882"},
            {{named(kMtk), 4000, 3000, FORMAT_P010, 95, ""}, "512 512 54"},
            {{named("c2.x"), 4000, 3000, FORMAT_P010, 95, "ro.soc.model=SM8350"}, ""},
    };
    for (const auto& test : kCases) {
        const std::string calls = afterSetup(test.setup, [](const LogCapture&, status_t) {
            const CallLog& log = CallLog::instance();
            return joined(log.of("ANativeWindow_setBuffersGeometry")) + joined(log.of("native_window_set_usage"));
        });
        EXPECT_EQ(test.geometry.empty() ? "" : test.geometry + "\n51\n", calls) << test.setup.codecs;
    }
}

TEST(EncoderSetup, StepsAreLoggedUnlessSwitchedOff) {
    const std::string quiet = "debug.quill.video.log.enable=4";
    const auto lines = [](const LogCapture& log, status_t) { return joined(log.of(kTag)); };
    const Order setup{named(kQti), 600, 500, FORMAT_P010, 90, "ro.soc.model=SM8550\n"};
    EXPECT_THAT(cutIntoLines(afterSetup(setup, lines)),
                ElementsAre("I/width: 600, height: 500, stride: 600 X 500 fmt: 1 quality: 90",
                            "I/createCodec Create HEVC Codec", "I/Codec name:c2.qti.hevc.encoder",
                            "I/Creating input surface for encode.", "I/Surface color-format: 54"));
    EXPECT_EQ("", afterSetup({setup.codecs, 600, 500, FORMAT_P010, 90, quiet}, lines));
}

TEST(EncoderSetup, SizeThatNoEncoderTakesIsRefused) {
    const std::string text = afterSetup(
            {"", 640, 480, FORMAT_NV12, 95, "debug.quill.video.log.enable=0"},
            [](const LogCapture& log, status_t status) { return joined(log.of(kTag)) + std::to_string(status); });
    EXPECT_EQ(
            "E/createCodec: Encoder doesnt' support size 640 x 480!\n"
            "E/Failed to create codec: Invalid argument (-22)\n-19",
            text);
}

TEST(EncoderSetup, RefusalOfTheCodecIsTheResult) {
    Faults::instance().inject("MediaCodec::configure", Fault::failing(-38));
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(64, 64, 64, 64, FORMAT_NV12, 95);
    EXPECT_EQ(-38, encoder->initializeCodec());
    encoder->close();
}

TEST(EncoderSetup, TimesSpreadTilesOverOneSecond) {
    setProperties("debug.quill.video.log.enable=0");
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(4000, 3000, 4000, 3000, FORMAT_NV12, 95);
    ASSERT_EQ(OK, encoder->initializeCodec());
    EXPECT_EQ(48, encoder->tileCount());
    EXPECT_EQ(132, encoder->computePresentationTime(0));
    EXPECT_EQ(20965, encoder->computePresentationTime(1));
    EXPECT_EQ(41798, encoder->computePresentationTime(2));
    Faults::instance().inject("MediaCodec::dequeueOutputBuffer", Fault::failing(-38));
    Faults::instance().inject("MediaCodec::dequeueInputBuffer", Fault::failing(-11));
    std::vector<sp<ABuffer>> out;
    EXPECT_EQ(-38, encoder->addYuvBuffer(nullptr, out));
    EXPECT_EQ(1020965, encoder->computePresentationTime(1)) << "a failed frame counts as one";
    encoder->close();
}

}  // namespace
