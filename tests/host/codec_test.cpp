#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <thread>

#include <gui/Surface.h>
#include <media/MediaCodecBuffer.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaCodecList.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AString.h>
#include <mediadrm/ICrypto.h>

#include "CodecsXml.h"
#include "HevcEngine.h"
#include "RateControl.h"
#include "support/ChildProcess.h"
#include "support/TemporaryFiles.h"
#include "support/Watched.h"

namespace {

using namespace android;
using namespace quill::host;

constexpr char kHevc[] = "video/hevc";

TEST(CodecList, DevicesHaveTheEncodersOfTheirFiles) {
    for (const auto& [device, encoder] : {std::pair("workstation", "c2.quill.hevc.encoder 11 VBR,CBR,CQ"),
                                          {"no-cq", "c2.quill.hevc.encoder 11 VBR,CBR"},
                                          {"software-only", "c2.android.hevc.encoder 5 VBR,CBR,CQ"},
                                          {"vendor-mtk", "c2.mtk.hevc.encoder 11 VBR,CBR,CQ"},
                                          {"no-codec-list", "no list"}}) {
        EXPECT_EQ(encoder, quill::test::inChild([&, device = device]() -> std::string {
                      setenv("QUILL_DEVICE", device, 1);
                      const sp<IMediaCodecList> list = MediaCodecList::getInstance();
                      status_t err = OK;
                      if (list == nullptr && MediaCodec::CreateByType(new ALooper, kHevc, true, &err) == nullptr) {
                          return err == NAME_NOT_FOUND ? "no list" : "another error";
                      }
                      const sp<MediaCodecInfo> info = list->getCodecInfo(0);
                      AString modes;
                      info->getCapabilitiesFor(kHevc)->getDetails()->findString("feature-bitrate-modes", &modes);
                      return info->getCodecName() + (" " + std::to_string(info->getAttributes())) + " " +
                             modes.c_str() +
                             (list->getCodecInfo(1) || info->getCapabilitiesFor("video/avc") ? " and more" : "");
                  }));
    }
}

std::optional<DeviceCodecs> read(const std::string& text) {
    const quill::test::TemporaryFolder folder;
    folder.write("codecs.xml", text);
    return readCodecsXml(folder.path() + "/codecs.xml");
}

TEST(CodecsXml, EveryFormOfLimitTypeAndFeatureIsRead) {
    const auto device = read(R"(<MediaCodecs>
      <Settings><Setting name="ignored" value="12"/></Settings>
      <Decoders><MediaCodec name="d" type="video/avc"/></Decoders>
      <Encoders><MediaCodec name="e"><Type name="video/hevc">
        <Limit name="alignment" value="2x2"/><Limit name="bitrate" range="1-9"/>
        <Limit name="size" min="2x2" max="4x4"/>
        <Feature name="intra-refresh"/><Feature name="tiled" required="true"/>
      </Type><Type name="video/avc"/></MediaCodec></Encoders></MediaCodecs>)");
    ASSERT_TRUE(device && device->codecs.size() == 2);
    EXPECT_EQ(device->codecs[0].attributes, 0);
    EXPECT_EQ(findCodecEntry(*device, "VIDEO/avc", true, 0), 1);
    std::string details;
    for (const auto& entry : device->codecs[1].types[0].details) details += entry.name + "=" + entry.value + " ";
    EXPECT_EQ(details, "alignment=2x2 bitrate-range=1-9 size-range=2x2-4x4 feature-intra-refresh=0 feature-tiled=1 ");
}

TEST(CodecsXml, MalformedFileGivesNoCodecs) {
    for (const char* text : {"", "<MediaCodecs><Encoders>", "<Codecs/>",
                             "<MediaCodecs><Encoders><MediaCodec name='a' type='b'/><MediaCodec/></Encoders>"
                             "</MediaCodecs>"}) {
        const auto device = read(text);
        EXPECT_TRUE(device && device->codecs.empty()) << text;
    }
    EXPECT_FALSE(readCodecsXml("/nonexistent/media_codecs.xml"));
}

/** Slopes, edges and noise, as in a photograph. */
PlanarPicture photograph(int width, int height) {
    PlanarPicture picture;
    picture.reshape(codedSize(width), codedSize(height), 8);
    std::mt19937 random(1);
    for (int plane = 0; plane < 3; ++plane) {
        for (int i = 0; i < picture.planeWidth(plane) * picture.planeHeight(plane); ++i) {
            const int x = i % picture.planeWidth(plane), y = i / picture.planeWidth(plane);
            const double slopes = 60 * std::sin(x * 0.05 + plane) + 40 * std::cos(y * 0.11);
            picture.planes[plane][i] = static_cast<uint8_t>(120 + slopes + x / 23 % 2 * 20 + random() % 7);
        }
    }
    return picture;
}

std::unique_ptr<HevcEngine> engineFor(int width, int height, double qp = 20, const char* preset = "ultrafast") {
    EngineSettings settings;
    settings.width = width;
    settings.height = height;
    settings.qp = qp;
    settings.preset = preset;
    return HevcEngine::open(settings);
}

std::vector<uint8_t> codeWith(const std::unique_ptr<HevcEngine>& engine, const PlanarPicture& picture) {
    std::vector<uint8_t> coded;
    EXPECT_TRUE(engine->encode(picture, std::nullopt, &coded));
    return coded;
}

TEST(HevcEngine, PicturesDoNotDependOnWhatWasCodedBefore) {
    const auto fresh = engineFor(256, 256), used = engineFor(256, 256);
    const PlanarPicture picture = photograph(256, 256);
    PlanarPicture black;
    black.reshape(256, 256, 8);
    for (int i = 0; i < 5; ++i) codeWith(used, i % 2 == 0 ? black : picture);
    EXPECT_EQ(fresh->parameterSets(), used->parameterSets());
    std::vector<uint8_t> first = codeWith(fresh, picture), later = codeWith(used, picture);
    for (auto* coded : {&first, &later}) coded->erase(coded->begin(), coded->begin() + 16);  // a flag there differs
    EXPECT_EQ(first, later);
}

TEST(HevcEngine, EverySizeIsCodedWithEveryPreset) {
    constexpr int kSizes[][2] = {{1, 1}, {15, 40}, {16, 16}, {18, 30}, {63, 65}, {64, 64}, {321, 241}, {512, 512}};
    for (const char* preset : {"ultrafast", "slow"}) {
        for (const auto& [width, height] : kSizes) {
            codeWith(engineFor(width, height, 20, preset), photograph(width, height));
        }
    }
}

TEST(HevcEngine, SizeGrowsWithEveryStepOfQuality) {
    const PlanarPicture picture = photograph(512, 512);
    std::vector<size_t> sizes = {0, 0};
    for (int quality = quill::test::isWatched() ? 95 : 0; quality <= 100; ++quality) {
        const size_t size = codeWith(engineFor(512, 512, qpForQuality(quality)), picture).size();
        // With so small a picture one step may shrink the stream by a few bytes; two steps never do.
        EXPECT_NE(size, sizes.back()) << quality;
        EXPECT_GT(size, sizes[sizes.size() - 2]) << quality;
        sizes.push_back(size);
    }
}

TEST(RateControl, SearchEndsNearTheTargetWhateverTheContent) {
    for (const double typicalQp : {8, 20, 40}) {
        QpSearch search(100000, 512 * 512);
        double best = 0;
        while (const auto qp = search.next()) {
            const double bits = 100000 * std::exp2((typicalQp - *qp) / 7.5);
            if (search.report(static_cast<int64_t>(bits))) best = bits;
        }
        EXPECT_NEAR(best, 100000, 15000) << typicalQp;
    }
}

TEST(ColorAspects, FollowTheKeysOfACamera) { EXPECT_EQ(colorAspectsFromKeys(2, 2, 1), (ColorAspects{5, 13, 5, true})); }

TEST(PictureLayout, OddPicturesRepeatTheirLastWholeSamples) {
    // 3x3 at a pitch of 4: one whole chroma sample; the client left the rest of the chroma at 0.
    const uint8_t i420[] = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 0, 50, 0, 0, 0, 60, 0, 0, 0};
    PlanarPicture planar;
    toPlanar({SampleLayout::kI420, i420, 3, 3, 4, 4}, RgbToYuv({}), &planar);
    EXPECT_TRUE(planar.planes[0][20] == 6 && planar.planes[0].back() == 9);
    for (const int plane : {1, 2}) EXPECT_EQ(planar.planes[plane], std::vector<uint8_t>(64, 40 + 10 * plane));
}

constexpr size_t kTileBytes = 393216;
constexpr int64_t kLong = 60'000'000;

using Keys = std::vector<std::pair<const char*, int32_t>>;

/** Of four tiles in NV12, with `others` in place of the usual ones. */
sp<AMessage> tileFormat(const Keys& others = {}) {
    const sp<AMessage> format = new AMessage;
    format->setString("mime", kHevc);
    for (const char* key : {"width", "height", "tile-width", "tile-height"}) format->setInt32(key, 512);
    for (const auto& [key, value] : Keys{{"grid-rows", 2}, {"grid-cols", 2}, {"color-format", 21}}) {
        format->setInt32(key, value);
    }
    for (const auto& [key, value] : others) format->setInt32(key, value);
    return format;
}

class Codec {
  public:
    MediaCodec* operator->() const { return mCodec.get(); }
    status_t configure(const sp<AMessage>& format = tileFormat()) const {
        return mCodec->configure(format, nullptr, nullptr, 1);
    }
    void begin(const sp<AMessage>& format = tileFormat()) const {
        ASSERT_EQ(configure(format), OK);
        ASSERT_EQ(mCodec->start(), OK);
    }

    /** A picture with slopes and noise that depend on `number`. */
    void queuePicture(int number) const {
        size_t index = 0;
        ASSERT_EQ(mCodec->dequeueInputBuffer(&index, kLong), OK);
        sp<MediaCodecBuffer> buffer;
        ASSERT_EQ(mCodec->getInputBuffer(index, &buffer), OK);
        for (size_t i = 0; i < buffer->capacity(); ++i) {
            buffer->data()[i] = static_cast<uint8_t>(i / (3 + number % 4) % 200 + i * i / 512 % 8);
        }
        ASSERT_EQ(mCodec->queueInputBuffer(index, 0, buffer->capacity(), number, 0), OK);
    }

    struct Output {
        status_t status;
        size_t size = 0;
        int64_t timeUs = 0;
        uint32_t flags = 0;
    };
    /** What comes out next. It is released at once. */
    Output dequeue(int64_t timeoutUs = kLong) const {
        Output output{};
        size_t index = 0, offset = 0;
        output.status =
                mCodec->dequeueOutputBuffer(&index, &offset, &output.size, &output.timeUs, &output.flags, timeoutUs);
        if (output.status != OK) return output;
        sp<MediaCodecBuffer> coded;
        mCodec->getOutputBuffer(index, &coded);
        const wp<MediaCodecBuffer> held = coded;
        coded.clear();
        mCodec->releaseOutputBuffer(index);
        EXPECT_EQ(held.promote(), nullptr) << "what is released is held no longer";
        return output;
    }
    /** The next picture after the format change and the parameter sets. */
    Output dequeuePicture() const {
        Output output = dequeue();
        while (output.status == INFO_FORMAT_CHANGED || output.flags == 2) output = dequeue();
        return output;
    }

  private:
    const sp<MediaCodec> mCodec = MediaCodec::CreateByType(new ALooper, kHevc, true);
};

TEST(Codec, CallsInTheWrongStateAreRefused) {
    const Codec codec;
    size_t index = 0;
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    EXPECT_EQ(codec->dequeueInputBuffer(&index), INVALID_OPERATION);
    ASSERT_EQ(codec.configure(), OK);
    EXPECT_EQ(codec.configure(), INVALID_OPERATION);
    EXPECT_EQ(codec.dequeue().status, INVALID_OPERATION);
    ASSERT_EQ(codec->start(), OK);
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    sp<IGraphicBufferProducer> producer;
    EXPECT_EQ(codec->createInputSurface(&producer), INVALID_OPERATION);
    EXPECT_EQ(codec->stop(), OK);
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(codec->release(), OK);
    EXPECT_EQ(codec.configure(), INVALID_OPERATION);
}

TEST(Codec, UnsupportedFormatsAreBadValues) {
    const Keys kBad = {{"color-format", 20}, {"color-format", 0}, {"width", 0},    {"height", -1},
                       {"width", 1 << 20},   {"grid-rows", 0},    {"quality", 101}};
    for (const auto& [key, value] : kBad) {
        EXPECT_EQ(Codec().configure(tileFormat({{key, value}})), BAD_VALUE) << key << " " << value;
    }
    const sp<AMessage> format = tileFormat();
    format->setString("mime", "video/avc");
    EXPECT_EQ(Codec().configure(format), BAD_VALUE);
}

TEST(Codec, BuffersAreCountedAndOwned) {
    const Codec codec;
    codec.begin();
    size_t index = 0, count = 0;
    while (codec->dequeueInputBuffer(&index, 0) == OK) ASSERT_LT(++count, 9u);
    EXPECT_GE(count, 4u);
    EXPECT_EQ(codec->dequeueInputBuffer(&index, 0), WOULD_BLOCK);
    EXPECT_EQ(codec.dequeue(0).status, WOULD_BLOCK);

    sp<MediaCodecBuffer> buffer;
    ASSERT_EQ(codec->getInputBuffer(0, &buffer), OK);
    EXPECT_EQ(buffer->capacity(), kTileBytes);
    EXPECT_EQ(codec->getInputBuffer(99, &buffer), INVALID_OPERATION);
    EXPECT_EQ(codec->queueInputBuffer(99, 0, kTileBytes, 0, 0), -ERANGE);
    EXPECT_EQ(codec->queueInputBuffer(0, 1, kTileBytes, 0, 0), BAD_VALUE);
    EXPECT_EQ(codec->queueInputBuffer(0, SIZE_MAX, 2, 0, 0), BAD_VALUE);
    EXPECT_EQ(codec->queueInputBuffer(0, 0, kTileBytes - 1000, 0, 0), BAD_VALUE);
    EXPECT_EQ(codec->queueInputBuffer(0, 0, 0, 0, 0), OK);
    EXPECT_EQ(codec->queueInputBuffer(0, 0, 0, 0, 0), -EACCES);
    EXPECT_EQ(codec->releaseOutputBuffer(0), -EACCES);
}

TEST(Codec, StopWakesWaitersAndDropsWork) {
    const Codec codec;
    codec.begin();
    status_t seen = OK;
    std::thread waiter([&] { seen = codec.dequeue(-1).status; });
    for (int i = 0; i < 4; ++i) codec.queuePicture(i);
    waiter.join();
    EXPECT_EQ(seen, INFO_FORMAT_CHANGED);
    std::thread second([&] {
        while ((seen = codec.dequeuePicture().status) == OK) {
        }
    });
    EXPECT_EQ(codec->stop(), OK);
    second.join();
    EXPECT_EQ(seen, INVALID_OPERATION);
    codec.begin();  // it can start again
    codec.queuePicture(7);
    EXPECT_EQ(codec.dequeuePicture().timeUs, 7);
    codec.queuePicture(8);  // destroyed while it codes
}

TEST(Codec, ConstantBitrateIsSharedByTheTiles) {
    for (const int32_t bitrate : {400'000, 1'600'000}) {
        const Codec codec;
        codec.begin(tileFormat({{"bitrate-mode", 2}, {"bitrate", bitrate}}));
        for (int i = 0; i < 4; ++i) codec.queuePicture(i);
        size_t bytes = 0;
        for (int i = 0; i < 4; ++i) bytes += codec.dequeuePicture().size;
        EXPECT_NEAR(static_cast<double>(bytes) * 8, bitrate, bitrate * 0.15);
    }
}

}  // namespace
