// The thumbnail of a frame: reduced as the definition says, and compressed.
#include <gmock/gmock.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "Nv12Conversion.h"
#include "Thumbnail.h"
#include "ThumbnailJpeg.h"
#include "support/CameraFrames.h"
#include "support/GuardedMemory.h"
#include "support/JpegReader.h"

namespace {

using namespace android;
using namespace quill::test;
using Bytes = std::vector<uint8_t>;

/** An NV12 thumbnail with something to see in all three planes. */
Bytes pattern(const ThumbnailSize& size) {
    Bytes nv12(static_cast<size_t>(size.yuvBytes()));
    for (int i = 0; i < size.yuvBytes(); ++i) {
        const int x = i % size.width, y = i / size.width;
        const int slope = x / 8 + y % 64;
        nv12[i] = static_cast<uint8_t>(y < size.height ? 60 + x / 4 + y % 128 : x % 2 == 0 ? 90 + slope : 160 - slope);
    }
    return nv12;
}

/** Its JPEG in a buffer of `capacity` bytes; empty where that is refused. */
Bytes compressed(const ThumbnailSize& size, size_t capacity) {
    Bytes jpeg(capacity);
    const int bytes = compressThumbnail(pattern(size).data(), size, jpeg.data(), capacity);
    jpeg.resize(static_cast<size_t>(std::max(bytes, 0)));
    return jpeg;
}

/** Mean difference in levels between a thumbnail and its JPEG, the worst component's. */
double distance(const Bytes& nv12, const ReadJpeg& jpeg) {
    const int samples = jpeg.width * jpeg.height;
    double sums[3] = {};
    for (int i = 0; i < samples; ++i) {
        const int x = i % jpeg.width, y = i / jpeg.width;
        const int chroma = samples + (x & ~1) + y / 2 * jpeg.width;
        const int expected[] = {nv12[i], nv12[chroma], nv12[chroma + 1]};
        for (int k = 0; k < 3; ++k) sums[k] += std::abs(expected[k] - jpeg.yuv[3 * i + k]);
    }
    return *std::max_element(sums, sums + 3) / samples;
}

TEST(Downscaling, RowsAreScaledInSinglePrecision) {
    constexpr int kWidth = 18, kHeight = 14;
    Bytes frame(kWidth * kHeight * 3 / 2);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i / kWidth);
    const ThumbnailSize size{256, 198};
    Bytes thumbnail(size.yuvBytes());
    downscaleNv12(frame.data(), {kWidth, kHeight, kWidth, kHeight}, size, thumbnail.data());
    EXPECT_EQ(6, thumbnail[99 * 256 + 255]) << "99 times 14 / 198 is 7";
}

constexpr InputColorFormat kFormats[] = {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12};

Bytes sampled(const CameraFrame& frame, const ThumbnailSize& size) {
    Bytes thumbnail(size.yuvBytes());
    GuardedMemory guarded(frame.bytes.size());  // a step behind the frame ends the process
    guarded.open();
    memcpy(guarded.data(), frame.bytes.data(), frame.bytes.size());
    sampleThumbnail(reinterpret_cast<uint8_t*>(guarded.data()), *findFrameFormat(frame.format), frame.geometry, size,
                    thumbnail.data());
    return thumbnail;
}

TEST(Sampling, IsConvertingAndReducingWhereStrideAndSliceHeightAreEven) {
    for (const InputColorFormat format : kFormats) {
        for (const Geometry& g : {Geometry{641, 479, 704, 482}, {300, 200, 300, 200}, {2, 30, 2, 30}, {5, 3, 8, 4}}) {
            CameraFrame frame = makeFrame(format, g);
            for (size_t i = 0; i < frame.bytes.size(); i += 3) frame.bytes[i] ^= static_cast<uint8_t>(i * i >> 4);
            Bytes nv12 = frame.bytes;
            nv12.resize(nv12Bytes(g));
            if (format == FORMAT_I420) convertI420(frame.bytes.data(), g, nv12.data());
            if (format == FORMAT_P010) convertP010(frame.bytes.data(), g, nv12.data());
            if (format == FORMAT_RGBA8888) convertRgba8888(frame.bytes.data(), g, nv12.data());
            const ThumbnailSize size{256, 192};
            Bytes reduced(size.yuvBytes());
            downscaleNv12(nv12.data(), g, size, reduced.data());
            EXPECT_TRUE(reduced == sampled(frame, size)) << format << " " << g.width;
        }
    }
}

TEST(Sampling, OddStridesKeepTheirColors) {
    const ThumbnailSize size{256, 180};
    const auto of = [&](InputColorFormat format, const Geometry& g) { return sampled(makeFrame(format, g), size); };
    for (const InputColorFormat format : kFormats) {
        for (const int height : {701, 51}) {  // of the lower one, every row is sampled
            const Bytes even = of(format, {1000, height + 1, 1000, height + 1});
            const Bytes odd = of(format, {1001, height, 1001, height});
            double difference = 0;
            for (size_t i = 0; i < even.size(); ++i) difference += std::abs(even[i] - odd[i]);
            EXPECT_LT(difference / static_cast<double>(even.size()), 1.5) << format << " " << height;
        }
    }
}

TEST(ThumbnailJpeg, IsBaseline420OfEveryHeightAndFitsItsBuffer) {
    for (const int height : {2, 4, 14, 16, 18, 30, 144, 192, 342, 65500}) {
        const ThumbnailSize size{256, height};
        const Bytes jpeg = compressed(size, size.yuvBytes() + 1000);  // a strip is less than its tables
        ASSERT_FALSE(jpeg.empty()) << height;
        EXPECT_EQ(jpeg, compressed(size, jpeg.size()));
        EXPECT_EQ(Bytes(), compressed(size, jpeg.size() - 1));
        const ReadJpeg read = readJpeg(jpeg);
        EXPECT_TRUE(read.baseline420);
        EXPECT_EQ(0, read.warnings);
        EXPECT_EQ(256, read.width);
        EXPECT_EQ(height, read.height);
        EXPECT_EQ(40, read.coarseness) << "quality 80";
        EXPECT_LT(distance(pattern(size), read), 0.9) << height;
    }
}

TEST(ThumbnailJpeg, ErrorOfTheLibraryLeavesTheProcessAlive) {
    constexpr ThumbnailSize kSize{256, 192};
    setenv("JPEGMEM", "1", 1);  // kilobytes that the library may take; for more it wants a file, which it cannot have
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Bytes(), compressed(kSize, kSize.yuvBytes()));
    unsetenv("JPEGMEM");
    EXPECT_NE(Bytes(), compressed(kSize, kSize.yuvBytes()));
    for (const ThumbnailSize impossible : {ThumbnailSize{256, 0}, {256, 65502}, {0, 256}}) {
        EXPECT_EQ(-1, compressThumbnail(nullptr, impossible, nullptr, 0)) << impossible.height;
    }
}

}  // namespace
