#include <gtest/gtest.h>

#include <thread>

#include <gui/Surface.h>
#include <media/MediaCodecBuffer.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AString.h>
#include <mediadrm/ICrypto.h>

namespace android {
namespace {

constexpr int32_t kNv12 = 21;
constexpr size_t kTileBytes = 393216;
constexpr int64_t kLong = 60'000'000;

sp<AMessage> tileFormat(int32_t colorFormat, int32_t rows = 2, int32_t cols = 2) {
    const sp<AMessage> format = new AMessage;
    format->setString("mime", "video/hevc");
    for (const char* key : {"width", "height", "tile-width", "tile-height"}) format->setInt32(key, 512);
    format->setInt32("grid-rows", rows);
    format->setInt32("grid-cols", cols);
    format->setInt32("color-format", colorFormat);
    format->setInt32("color-standard", 2);
    format->setInt32("color-transfer", 2);
    format->setInt32("color-range", 1);
    format->setInt32("bitrate-mode", 0);
    format->setInt32("quality", 50);
    return format;
}

struct Output {
    status_t status;
    size_t index = 0;
    size_t size = 0;
    int64_t timeUs = 0;
    uint32_t flags = 0;
};

class Codec {
  public:
    Codec() : mCodec(MediaCodec::CreateByType(new ALooper, "video/hevc", true)) {}

    MediaCodec* operator->() const { return mCodec.get(); }
    status_t configure(const sp<AMessage>& format) const { return mCodec->configure(format, nullptr, nullptr, 1); }
    void begin(const sp<AMessage>& format) const {
        ASSERT_EQ(configure(format), OK);
        ASSERT_EQ(mCodec->start(), OK);
    }

    /** A picture with slopes and noise that depend on `number`. */
    void queuePicture(int number, uint32_t flags = 0) const {
        size_t index = 0;
        ASSERT_EQ(mCodec->dequeueInputBuffer(&index, kLong), OK);
        sp<MediaCodecBuffer> buffer;
        ASSERT_EQ(mCodec->getInputBuffer(index, &buffer), OK);
        for (size_t i = 0; i < buffer->capacity(); ++i) {
            buffer->data()[i] = static_cast<uint8_t>(i / (3 + number % 4) % 200 + i * i / 512 % 8);
        }
        ASSERT_EQ(mCodec->queueInputBuffer(index, 0, buffer->capacity(), number, flags), OK);
    }

    Output dequeue(int64_t timeoutUs = kLong) const {
        Output output{};
        size_t offset = 0;
        output.status = mCodec->dequeueOutputBuffer(&output.index, &offset, &output.size, &output.timeUs, &output.flags,
                                                    timeoutUs);
        return output;
    }
    /** The next picture after the format change and the parameter sets. It is released at once. */
    Output dequeuePicture() const {
        Output output = dequeue();
        while (output.status == INFO_FORMAT_CHANGED || (output.status == OK && output.flags == 2)) {
            if (output.status == OK) mCodec->releaseOutputBuffer(output.index);
            output = dequeue();
        }
        if (output.status == OK) mCodec->releaseOutputBuffer(output.index);
        return output;
    }

  private:
    const sp<MediaCodec> mCodec;
};

TEST(Codec, CallsInTheWrongStateAreRefused) {
    Codec codec;
    size_t index = 0;
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    EXPECT_EQ(codec->dequeueInputBuffer(&index), INVALID_OPERATION);
    ASSERT_EQ(codec.configure(tileFormat(kNv12)), OK);
    EXPECT_EQ(codec.configure(tileFormat(kNv12)), INVALID_OPERATION);
    EXPECT_EQ(codec.dequeue().status, INVALID_OPERATION);
    ASSERT_EQ(codec->start(), OK);
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    sp<IGraphicBufferProducer> producer;
    EXPECT_EQ(codec->createInputSurface(&producer), INVALID_OPERATION);
    EXPECT_EQ(codec->stop(), OK);
    EXPECT_EQ(codec->start(), INVALID_OPERATION);
    EXPECT_EQ(codec->release(), OK);
    EXPECT_EQ(codec->release(), OK);
    EXPECT_EQ(codec.configure(tileFormat(kNv12)), INVALID_OPERATION);
}

TEST(Codec, UnsupportedFormatsAreBadValues) {
    const std::pair<const char*, int32_t> kBad[] = {
            {"color-format", 20}, {"color-format", 0}, {"width", 0},     {"height", -1},
            {"width", 1 << 20},   {"grid-rows", 0},    {"quality", 101},
    };
    for (const auto& [key, value] : kBad) {
        const sp<AMessage> format = tileFormat(kNv12);
        format->setInt32(key, value);
        EXPECT_EQ(Codec().configure(format), BAD_VALUE) << key << " " << value;
    }
    const sp<AMessage> format = tileFormat(kNv12);
    format->setString("mime", "video/avc");
    EXPECT_EQ(Codec().configure(format), BAD_VALUE);
}

TEST(Codec, OutputIsFormatThenParameterSetsThenPicturesInOrder) {
    Codec codec;
    codec.begin(tileFormat(kNv12, 3, 4));
    codec.queuePicture(0);
    ASSERT_EQ(codec.dequeue().status, INFO_FORMAT_CHANGED);
    sp<AMessage> format;
    sp<ABuffer> csd;
    ASSERT_EQ(codec->getOutputFormat(&format), OK);
    ASSERT_TRUE(format->findBuffer("csd-0", &csd));
    const Output config = codec.dequeue();
    ASSERT_EQ(config.status, OK);
    EXPECT_EQ(config.flags, 2u);
    sp<MediaCodecBuffer> buffer;
    ASSERT_EQ(codec->getOutputBuffer(config.index, &buffer), OK);
    EXPECT_EQ(std::string(buffer->data(), buffer->data() + buffer->size()),
              std::string(csd->data(), csd->data() + csd->size()));
    EXPECT_EQ(codec->releaseOutputBuffer(config.index), OK);
    EXPECT_EQ(codec->releaseOutputBuffer(config.index), -EACCES);

    for (int i = 0; i < 12; ++i) {
        if (i < 11) codec.queuePicture(i + 1);
        const Output picture = codec.dequeuePicture();
        EXPECT_EQ(picture.flags, 1u);
        EXPECT_EQ(picture.timeUs, i);
        EXPECT_GT(picture.size, 100u);
    }
    EXPECT_EQ(codec.dequeue(0).status, WOULD_BLOCK);
}

TEST(Codec, BuffersAreCountedAndOwned) {
    Codec codec;
    codec.begin(tileFormat(kNv12));
    size_t index = 0;
    size_t count = 0;
    while (codec->dequeueInputBuffer(&index, 0) == OK) ASSERT_LT(++count, 9u);
    EXPECT_GE(count, 4u);
    EXPECT_EQ(codec->dequeueInputBuffer(&index, 0), WOULD_BLOCK);

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
    Codec codec;
    codec.begin(tileFormat(kNv12));
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
    ASSERT_EQ(codec.configure(tileFormat(kNv12)), OK);  // it can start again
    ASSERT_EQ(codec->start(), OK);
    codec.queuePicture(7);
    EXPECT_EQ(codec.dequeuePicture().timeUs, 7);
    codec.queuePicture(8);  // destroyed while it codes
}

TEST(Codec, ConstantBitrateIsSharedByTheTiles) {
    for (int32_t bitrate : {400'000, 1'600'000}) {
        Codec codec;
        const sp<AMessage> format = tileFormat(kNv12);
        format->setInt32("bitrate-mode", 2);
        format->setInt32("bitrate", bitrate);
        codec.begin(format);
        size_t bytes = 0;
        for (int i = 0; i < 4; ++i) codec.queuePicture(i);
        for (int i = 0; i < 4; ++i) bytes += codec.dequeuePicture().size;
        EXPECT_NEAR(static_cast<double>(bytes) * 8, bitrate, bitrate * 0.15);
    }
}

}  // namespace
}  // namespace android
