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
using namespace android::camera3;
using Lines = std::vector<std::string>;

const std::string kAdopted = "c2.test.hevc.encoder", kTaken = "64x64-4096x4096";
const std::string kHevc = xml(Codec{});

std::string heic(const std::string& sizes) { return xml({"c2.test.heic", sizes, "", "image/vnd.android.heic"}); }

std::string measuredRate(const std::string& size, const std::string& range) {
    return "<Limit name=\"measured-frame-rate-" + size + "\" range=\"" + range + "\"/>";
}

/** What a device logs and, at last, answers: "no", "whole NAME" or "grid NAME". */
Lines linesOn(const std::string& codecs, int32_t width = 512, int32_t height = 512) {
    return cutIntoLines(inChild([&] {
        const TestDevice device(codecs);
        const LogCapture log;
        bool useGrid = false;
        AString name("untouched");
        const bool supported = HeicEncoderInfoManager::getInstance().isSizeSupported(width, height, &useGrid, &name);
        const std::string how = supported ? useGrid ? "grid " : "whole " : useGrid ? "no, but stored " : "no, ";
        return joined(log.of("HeicEncoderInfoManager")) + how + name.c_str();
    }));
}

std::string answerOn(const std::string& codecs, int32_t width = 512, int32_t height = 512) {
    return linesOn(codecs, width, height).back();
}

TEST(HeicEncoderInfo, SizeDecidesAboutGrid) {
    const std::string both = kHevc + heic("600x600-1000x1000"), unread = kHevc + heic("128x96");
    const struct {
        const std::string& codecs;
        int32_t width, height;
        const char* how;
    } kCases[] = {
            {kHevc, 512, 512, "whole "}, {kHevc, 513, 512, "grid "},  {kHevc, 512, 513, "grid "},
            {kHevc, 64, 64, "whole "},   {kHevc, 63, 64, "grid "},    {kHevc, 8000, 6000, "grid "},
            {both, 600, 600, "grid "},   {both, 500, 500, "whole "},  {both, 1001, 1000, "grid "},
            {unread, 1, 1, "grid "},     {unread, 512, 512, "grid "},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(test.how + kAdopted, answerOn(test.codecs, test.width, test.height))
                << test.width << "x" << test.height;
    }
    EXPECT_EQ("grid " + kAdopted, answerOn(kHevc + heic("96x96-1000x2147483648")));
}

TEST(HeicEncoderInfo, EncoderMustSuit) {
    const std::string kUnreadable = measuredRate("9999999999x1", "30-60");  // of a size beyond an int
    const std::pair<Codec, bool> kCases[] = {
            {{kAdopted, kTaken, "CQ", "video/hevc", false}, false},  // software
            {{kAdopted, kTaken, "VBR,CBR"}, false},
            {{kAdopted, kTaken, "CQX,XCQ"}, false},
            {{kAdopted, "1024x1024-4096x4096"}, false},
            {{kAdopted, "64x64-511x4096"}, false},
            {{kAdopted, "64x64-4096x511"}, false},
            {{kAdopted, "128x96"}, false},
            {{kAdopted, "64x64-4096x99999999999"}, false},
            {{kAdopted, kTaken, "CQ", "video/hevc", true, kUnreadable}, true},
            {{kAdopted, kTaken, "VBR,CQ,CBR"}, true},
            {{kAdopted, "64*64-8192x8192"}, true},
            {{kAdopted, "512x512-512x512"}, true},
            {{"c2.long", "64x64-4096x" + std::string(100000, '9')}, false},
            {{"c2.long", kTaken, std::string(100000, 'C') + ",VBR"}, false},
    };
    const Codec second{"c2.test.second"};
    for (const auto& [first, adopted] : kCases) {
        EXPECT_EQ("whole " + (adopted ? kAdopted : second.name), answerOn(xml(first) + xml(second))) << xml(first);
    }
}

TEST(HeicEncoderInfo, FirstMeasuredRateOfASizeCounts) {
    const std::string rates = measuredRate("640x480", "30-60") + measuredRate("640*480", "1-2");
    const TestDevice device(
            xml({kAdopted, kTaken, "CQ", "video/hevc", true, rates}) +
            xml({"c2.test.heic", "64x64-512x512", "", "image/vnd.android.heic", true, measuredRate("512x256", "7-8")}));
    const HeicEncoderInfoManager& manager = HeicEncoderInfoManager::getInstance();
    EXPECT_EQ((FrameRateMaps{{{640, 480}, {30, 60}}}), manager.mHevcFrameRates);
    EXPECT_EQ((FrameRateMaps{{{512, 256}, {7, 8}}}), manager.mHeicFrameRates);
}

TEST(HeicEncoderInfo, LinesTellWhatIsKnownAndWhatIsWrong) {
    const std::string noRange = "E/getCodecSizeRange: Failed to query size range for codec ", no = "no, untouched";
    const std::string badHevc = "E/getHevcCodecDetails: [c2.bad] Failed to get size range: Invalid argument (-22)";
    const std::string nothing =
            "I/isSizeSupported mHasHEIC 0[0*0-2147483647*2147483647] mHasHEVC 0[0*0-0*0], HEVCname ";
    const auto rated = [](const char* rates) {
        return xml({"c2.bad", kTaken, "CQ", "video/hevc", true, measuredRate("1920x1080", rates)});
    };
    const std::pair<std::string, Lines> kCases[] = {
            {"", {nothing, no}},
            {kHevc + heic("96x96-1000x2000"),
             {"I/isSizeSupported mHasHEIC 1[96*96-1000*2000] mHasHEVC 1[64*64-4096*4096], HEVCname " + kAdopted,
              "grid " + kAdopted}},
            {heic(kTaken), {"E/initialize: Device must support HEVC codec if HEIC codec is available!", no}},
            {xml({"c2.bad", ""}) + kHevc, {noRange + "video/hevc", badHevc, nothing, no}},
            {xml({"c2.bad", "4096x64-64x4096"}) + kHevc,
             {"E/getCodecSizeRange: Invalid video/hevc code size range: 4096x64-64x4096", badHevc, nothing, no}},
            {rated("30") + kHevc, {badHevc, nothing, no}},
            {rated("30-99999999999") + kHevc, {badHevc, nothing, no}},
            {kHevc + heic(""),
             {noRange + "image/vnd.android.heic",
              "E/initialize: Failed to get HEIC codec size range: Invalid argument (-22)", no}},
            {xml({"c2.bad", kTaken, ""}) + kHevc,
             {"E/getHevcCodecDetails: [c2.bad] Failed to query bitrate modes",
              "I/isSizeSupported mHasHEIC 0[0*0-2147483647*2147483647] mHasHEVC 1[64*64-4096*4096], HEVCname " +
                      kAdopted,
              "whole " + kAdopted}},
    };
    for (const auto& [codecs, lines] : kCases) EXPECT_EQ(lines, linesOn(codecs)) << codecs;
    quill::host::Faults::instance().inject("MediaCodecList::getInstance", quill::host::Fault::failing(-1));
    EXPECT_EQ((Lines{nothing, no}), linesOn(kHevc)) << "without a list";
}

TEST(HeicEncoderInfo, NameMayBeLeftOutAndGridMayNot) {
    const LogCapture log;
    bool useGrid = false;
    EXPECT_TRUE(HeicEncoderInfoManager::getInstance().isSizeSupported(513, 513, &useGrid, nullptr));
    EXPECT_TRUE(useGrid);
    EXPECT_FALSE(HeicEncoderInfoManager::getInstance().isSizeSupported(512, 512, nullptr, nullptr));
    EXPECT_THAT(log.lines().back(),
                testing::StartsWith("E/HeicEncoderInfoManager: isSizeSupported: invalid parameters: useGrid "));
}

TEST(FindClosestSize, SmallestAreaDifferenceWins) {
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
