#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaCodecList.h>

#include "CodecsXml.h"

namespace android {
namespace {

constexpr char kHevc[] = "video/hevc";
constexpr char kHeic[] = "image/vnd.android.heic";

sp<IMediaCodecList> listOf(const char* device) {
    setenv("QUILL_DEVICE", device, 1);
    return MediaCodecList::getInstance();
}

std::optional<quill::host::DeviceCodecs> read(const std::string& text) {
    const std::string path = testing::TempDir() + "/media_codecs_under_test.xml";
    std::ofstream(path) << text;
    return quill::host::readCodecsXml(path);
}

std::string detail(const sp<MediaCodecInfo>& info, const char* name) {
    AString value;
    const bool found = info->getCapabilitiesFor(kHevc)->getDetails()->findString(name, &value);
    return found ? value.c_str() : "(none)";
}

TEST(CodecList, WorkstationHasOneHardwareEncoderWithConstantQuality) {
    const sp<IMediaCodecList> list = listOf("workstation");
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->findCodecByType("VIDEO/hevc", true), 0);
    EXPECT_EQ(list->findCodecByType(kHevc, true, 1), NAME_NOT_FOUND);
    EXPECT_EQ(list->findCodecByType(kHevc, false), NAME_NOT_FOUND);
    const sp<MediaCodecInfo> info = list->getCodecInfo(0);
    EXPECT_EQ(info->getAttributes(), 1 | 2 | 8);
    EXPECT_EQ(detail(info, "size-range"), "64x64-8192x8192");
    EXPECT_EQ(detail(info, "measured-frame-rate-1920x1080-range"), "30-60");
    EXPECT_THAT(detail(info, "feature-bitrate-modes"), testing::HasSubstr("CQ"));
    EXPECT_EQ(info->getCapabilitiesFor(kHeic), nullptr);
    EXPECT_EQ(list->getCodecInfo(1), nullptr);
}

TEST(CodecList, DeviceWithoutListHasNone) {
    EXPECT_EQ(listOf("no-codec-list"), nullptr);
    status_t err = OK;
    EXPECT_EQ(MediaCodec::CreateByType(new ALooper, kHevc, true, &err), nullptr);
    EXPECT_EQ(err, NAME_NOT_FOUND);
}

TEST(CodecList, SoftwareEncoderSaysSo) { EXPECT_EQ(listOf("software-only")->getCodecInfo(0)->getAttributes(), 1 | 4); }

TEST(CodecList, DeviceWithoutConstantQualitySaysSo) {
    EXPECT_EQ(detail(listOf("no-cq")->getCodecInfo(0), "feature-bitrate-modes"), "VBR,CBR");
}

TEST(CodecList, VendorsEncoderHasItsName) {
    EXPECT_STREQ(listOf("vendor-mtk")->getCodecInfo(0)->getCodecName(), "c2.mtk.hevc.encoder");
}

TEST(CodecsXml, EveryFormOfLimitTypeAndFeatureIsRead) {
    const auto device = read(R"(<MediaCodecs>
      <Settings><Setting name="ignored" value="12"/></Settings>
      <Decoders><MediaCodec name="d" type="video/avc"/></Decoders>
      <Encoders><MediaCodec name="e"><Type name="video/hevc">
        <Limit name="alignment" value="2x2"/><Limit name="bitrate" range="1-9"/>
        <Feature name="intra-refresh"/><Feature name="tiled" required="true"/>
      </Type><Type name="video/avc"/></MediaCodec></Encoders></MediaCodecs>)");
    ASSERT_TRUE(device && device->codecs.size() == 2);
    EXPECT_EQ(device->codecs[0].attributes, 0);
    EXPECT_EQ(quill::host::findCodecEntry(*device, "video/avc", true, 0), 1);
    std::string details;
    for (const auto& entry : device->codecs[1].types[0].details) details += entry.name + "=" + entry.value + " ";
    EXPECT_EQ(details, "alignment=2x2 bitrate-range=1-9 feature-intra-refresh=0 feature-tiled=1 ");
}

TEST(CodecsXml, MalformedFileGivesNoCodecs) {
    for (const char* text : {"", "<MediaCodecs><Encoders>", "<Codecs/>",
                             "<MediaCodecs><Encoders><MediaCodec name='a' type='b'/><MediaCodec/></Encoders>"
                             "</MediaCodecs>"}) {
        const auto device = read(text);
        ASSERT_TRUE(device) << text;
        EXPECT_TRUE(device->codecs.empty()) << text;
    }
    EXPECT_FALSE(quill::host::readCodecsXml("/nonexistent/media_codecs.xml"));
}

}  // namespace
}  // namespace android
