// Which frames can be encoded, how, and with which component, over devices written for the purpose.
#include <gmock/gmock.h>

#include <media/stagefright/foundation/AString.h>

#include "Faults.h"
#include "HeicEncoderInfoManager.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using android::camera3::FrameRateMaps;
using android::camera3::HeicEncoderInfoManager;
using android::camera3::SizePairHash;
using quill::host::Fault;
using quill::host::Faults;

constexpr char kTag[] = "HeicEncoderInfoManager";

Codec heic(const std::string& sizes) { return {"c2.test.heic", sizes, "", "image/vnd.android.heic"}; }

struct Query {
    int32_t width;
    int32_t height;
};

/** "no", "whole NAME" or "grid NAME". */
std::string answer(const Query& query) {
    bool useGrid = false;
    AString name("untouched");
    if (HeicEncoderInfoManager::getInstance().isSizeSupported(query.width, query.height, &useGrid, &name)) {
        return (useGrid ? "grid " : "whole ") + std::string(name.c_str());
    }
    return useGrid || name != "untouched" ? "no, but something was stored" : "no";
}

std::string answerOn(const std::string& codecs, const Query& query) {
    return inChild([&] {
        const TestDevice device(codecs);
        return answer(query);
    });
}

/** What a device logs while its codecs are read. */
std::vector<std::string> linesOn(const std::string& codecs) {
    return cutIntoLines(inChild([&] {
        const TestDevice device(codecs);
        const LogCapture log;
        HeicEncoderInfoManager::getInstance();
        return joined(log.of(kTag));
    }));
}

const std::string kAdopted = "c2.test.hevc.encoder";

std::string measuredRate(const std::string& size, const std::string& range) {
    return "<Limit name=\"measured-frame-rate-" + size + "\" range=\"" + range + "\"/>";
}

TEST(HeicEncoderInfo, SizeDecidesAboutGrid) {
    const std::string hevc = xml(Codec{}), both = hevc + xml(heic("600x600-1000x1000"));
    const struct {
        const std::string& codecs;
        Query query;
        bool grid;
    } kCases[] = {
            {hevc, {512, 512}, false}, {hevc, {513, 512}, true},  {hevc, {512, 513}, true},
            {hevc, {64, 64}, false},   {hevc, {63, 64}, true},    {hevc, {8000, 6000}, true},
            {both, {600, 600}, true},  {both, {500, 500}, false}, {both, {1001, 1000}, true},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(std::string(test.grid ? "grid " : "whole ") + kAdopted, answerOn(test.codecs, test.query))
                << test.query.width << "x" << test.query.height;
    }
}

TEST(HeicEncoderInfo, EncoderMustSuit) {
    const std::string kTaken = "64x64-4096x4096";
    const std::string kUnreadable = measuredRate("9999999999x1", "30-60");  // of a size beyond an int
    const std::pair<Codec, bool> kCases[] = {
            {{kAdopted, kTaken, "CQ", "video/hevc", false}, false},  // software
            {{kAdopted, kTaken, "VBR,CBR"}, false},
            {{kAdopted, kTaken, "CQX,XCQ"}, false},
            {{kAdopted, kTaken, ""}, false},
            {{kAdopted, "1024x1024-4096x4096"}, false},
            {{kAdopted, "64x64-511x4096"}, false},
            {{kAdopted, "64x64-4096x511"}, false},
            {{kAdopted, "128x96"}, false},
            {{kAdopted, "64x64-4096x99999999999"}, false},
            {{kAdopted, kTaken, "CQ", "video/hevc", true, kUnreadable}, true},
            {{kAdopted, kTaken, "CQ,VBR"}, true},
            {{kAdopted, kTaken, "VBR,CQ,CBR"}, true},
            {{kAdopted, "64*64-8192x8192"}, true},
            {{kAdopted, "512x512-512x512"}, true},
            {{"c2.long", "64x64-4096x" + std::string(100000, '9')}, false},
            {{"c2.long", kTaken, std::string(100000, 'C') + ",VBR"}, false},
    };
    const Codec second{"c2.test.second"};
    for (const auto& [first, adopted] : kCases) {
        EXPECT_EQ("whole " + (adopted ? kAdopted : second.name), answerOn(xml(first) + xml(second), {512, 512}))
                << xml(first);
    }
}

TEST(HeicEncoderInfo, FirstMeasuredRateOfASizeCounts) {
    const std::string rates = measuredRate("640x480", "30-60") + measuredRate("640*480", "1-2");
    const TestDevice device(
            xml({kAdopted, "64x64-4096x4096", "CQ", "video/hevc", true, rates}) +
            xml({"c2.test.heic", "64x64-512x512", "", "image/vnd.android.heic", true, measuredRate("512x256", "7-8")}));
    const HeicEncoderInfoManager& manager = HeicEncoderInfoManager::getInstance();
    EXPECT_EQ((FrameRateMaps{{{640, 480}, {30, 60}}}), manager.mHevcFrameRates);
    EXPECT_EQ((FrameRateMaps{{{512, 256}, {7, 8}}}), manager.mHeicFrameRates);
}

TEST(HeicEncoderInfo, HeicEncoderNeedsHevcEncoder) {
    const std::string lonely = xml(heic("64x64-4096x4096"));
    EXPECT_EQ("no", answerOn(lonely, {512, 512}));
    EXPECT_THAT(linesOn(lonely),
                testing::ElementsAre("E/initialize: Device must support HEVC codec if HEIC codec is available!"));
    EXPECT_THAT(linesOn(""), testing::IsEmpty());
    EXPECT_EQ("no", answerOn("", {512, 512}));
    for (const char* const unreadable : {"128x96", "96x96-1000x2147483648"}) {
        const std::string unbounded = xml(Codec{}) + xml(heic(unreadable));
        EXPECT_EQ("grid " + kAdopted, answerOn(unbounded, {1, 1}));
        EXPECT_EQ("grid " + kAdopted, answerOn(unbounded, {512, 512}));
    }
}

TEST(HeicEncoderInfo, UnreadableCodecsEndTheSearch) {
    const std::string good = xml(Codec{});
    const std::string rate = measuredRate("1920x1080", "30");
    const std::string fast = measuredRate("1920x1080", "30-99999999999");
    const std::string noRange = "E/getCodecSizeRange: Failed to query size range for codec ";
    const struct {
        std::string codecs;
        std::vector<std::string> lines;
    } kCases[] = {
            {xml({"c2.bad", ""}) + good,
             {noRange + "video/hevc",
              "E/getHevcCodecDetails: [c2.bad] Failed to get size range: Invalid argument (-22)"}},
            {xml({"c2.bad", "4096x64-64x4096"}) + good,
             {"E/getCodecSizeRange: Invalid video/hevc code size range: 4096x64-64x4096",
              "E/getHevcCodecDetails: [c2.bad] Failed to get size range: Invalid argument (-22)"}},
            {xml({"c2.bad", "64x64-4096x4096", "CQ", "video/hevc", true, rate}) + good,
             {"E/getHevcCodecDetails: [c2.bad] Failed to get size range: Invalid argument (-22)"}},
            {xml({"c2.bad", "64x64-4096x4096", "CQ", "video/hevc", true, fast}) + good,
             {"E/getHevcCodecDetails: [c2.bad] Failed to get size range: Invalid argument (-22)"}},
            {good + xml(heic("")),
             {noRange + "image/vnd.android.heic",
              "E/initialize: Failed to get HEIC codec size range: Invalid argument (-22)"}},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.lines, linesOn(test.codecs)) << test.codecs;
        EXPECT_EQ("no", answerOn(test.codecs, {512, 512})) << test.codecs;
    }
    EXPECT_THAT(linesOn(xml({"c2.bad", "64x64-4096x4096", ""}) + good),
                testing::ElementsAre("E/getHevcCodecDetails: [c2.bad] Failed to query bitrate modes"));
}

TEST(HeicEncoderInfo, NoCodecListIsNoEncoder) {
    Faults::instance().inject("MediaCodecList::getInstance", Fault::failing(-1));
    const LogCapture log;
    EXPECT_EQ("no", answer({512, 512}));
    EXPECT_THAT(log.of(kTag), testing::ElementsAre("I/isSizeSupported mHasHEIC 0[0*0-2147483647*2147483647] "
                                                   "mHasHEVC 0[0*0-0*0], HEVCname "));
}

TEST(HeicEncoderInfo, EveryQueryLogsWhatIsKnown) {
    const TestDevice device(xml(Codec{}) + xml(heic("96x96-1000x2000")));
    const LogCapture log;
    EXPECT_EQ("whole " + kAdopted, answer({80, 80}));
    bool useGrid = false;
    EXPECT_TRUE(HeicEncoderInfoManager::getInstance().isSizeSupported(513, 513, &useGrid, nullptr));
    EXPECT_TRUE(useGrid);
    EXPECT_FALSE(HeicEncoderInfoManager::getInstance().isSizeSupported(512, 512, nullptr, nullptr));
    const std::string known =
            "I/isSizeSupported mHasHEIC 1[96*96-1000*2000] mHasHEVC 1[64*64-4096*4096], HEVCname c2.test.hevc.encoder";
    EXPECT_THAT(
            log.of(kTag),
            testing::ElementsAre(known, known, testing::StartsWith("E/isSizeSupported: invalid parameters: useGrid ")));
}

TEST(FindClosestSize, SmallestAreaDifferenceWins) {
    setenv("QUILL_DEVICE", "no-codec-list", 1);
    const HeicEncoderInfoManager& manager = HeicEncoderInfoManager::getInstance();
    FrameRateMaps sizes;
    EXPECT_EQ(sizes.end(), manager.findClosestSize(sizes, 1600, 900));
    sizes = {{{1280, 720}, {30, 60}}, {{1920, 1080}, {15, 30}}};
    EXPECT_EQ(1280, manager.findClosestSize(sizes, 1600, 900)->first.first);
    EXPECT_EQ(1920, manager.findClosestSize(sizes, 4000, 3000)->first.first);
    // Equal areas: the first met. An area that wraps to a negative one counts as it is.
    sizes = {{{200, 100}, {1, 2}}, {{100, 200}, {3, 4}}};
    EXPECT_EQ(sizes.begin(), manager.findClosestSize(sizes, 10, 10));
    sizes = {{{65536, 32768}, {1, 2}}};
    EXPECT_EQ(sizes.begin(), manager.findClosestSize(sizes, 0, 0));
    EXPECT_EQ(static_cast<size_t>(-31), SizePairHash()({-1, 0}));
    EXPECT_EQ(static_cast<size_t>(-1194967289), SizePairHash()({100000000, 7})) << "wraps at 32 bits";
}

}  // namespace
