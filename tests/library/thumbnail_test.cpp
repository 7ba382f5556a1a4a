// The thumbnail of a frame: reduced as the definition says, and compressed.
#include <gmock/gmock.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "Nv12Conversion.h"
#include "QuillHeifWriter.h"
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
    for (int i = 0; i < size.lumaSamples(); ++i) {
        nv12[i] = static_cast<uint8_t>(60 + i % size.width / 4 + i / size.width % 128);
    }
    for (int i = 0; i < size.lumaSamples() / 2; ++i) {
        const int slope = i % size.width / 8 + i / size.width % 64;
        nv12[size.lumaSamples() + i] = static_cast<uint8_t>(i % 2 == 0 ? 90 + slope : 160 - slope);
    }
    return nv12;
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

/** The conversion that `saveYuvBuf` makes. */
Bytes converted(const CameraFrame& frame) {
    Bytes nv12(nv12Bytes(frame.geometry));
    if (frame.format == FORMAT_NV12) std::copy(frame.bytes.begin(), frame.bytes.end(), nv12.begin());
    if (frame.format == FORMAT_I420) convertI420(frame.bytes.data(), frame.geometry, nv12.data());
    if (frame.format == FORMAT_P010) convertP010(frame.bytes.data(), frame.geometry, nv12.data());
    if (frame.format == FORMAT_RGBA8888) convertRgba8888(frame.bytes.data(), frame.geometry, nv12.data());
    return nv12;
}

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
            const ThumbnailSize size{256, 192};
            Bytes reduced(size.yuvBytes());
            downscaleNv12(converted(frame).data(), g, size, reduced.data());
            EXPECT_TRUE(reduced == sampled(frame, size)) << format << " " << g.width;
        }
    }
}

TEST(Sampling, OddStridesKeepTheirColours) {
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

TEST(ThumbnailJpeg, IsBaseline420OfEveryHeight) {
    for (const int height : {2, 4, 14, 16, 18, 30, 144, 192, 342, 65500}) {
        const ThumbnailSize size{256, height};
        const Bytes nv12 = pattern(size);
        Bytes jpeg(static_cast<size_t>(size.yuvBytes()) + 1000);  // a strip is less than the tables in front of it
        const int bytes = compressThumbnail(nv12.data(), size, jpeg.data(), jpeg.size());
        ASSERT_GT(bytes, 0) << height;
        jpeg.resize(static_cast<size_t>(bytes));
        const ReadJpeg read = readJpeg(jpeg);
        EXPECT_TRUE(read.baseline420);
        EXPECT_EQ(0, read.warnings);
        EXPECT_EQ(256, read.width);
        EXPECT_EQ(height, read.height);
        EXPECT_EQ(6, read.coarseness) << "quality 80";
        EXPECT_LT(distance(nv12, read), 0.9) << height;
    }
}

TEST(ThumbnailJpeg, LargerThanItsBufferIsRefused) {
    const ThumbnailSize size{256, 18};
    const Bytes nv12 = pattern(size);
    Bytes jpeg(static_cast<size_t>(size.yuvBytes()));
    const int bytes = compressThumbnail(nv12.data(), size, jpeg.data(), jpeg.size());
    ASSERT_GT(bytes, 0);
    Bytes exact(static_cast<size_t>(bytes)), tooSmall(exact.size() - 1);
    EXPECT_EQ(bytes, compressThumbnail(nv12.data(), size, exact.data(), exact.size()));
    EXPECT_TRUE(std::equal(exact.begin(), exact.end(), jpeg.begin()));
    EXPECT_EQ(-1, compressThumbnail(nv12.data(), size, tooSmall.data(), tooSmall.size()));
}

TEST(ThumbnailJpeg, ErrorOfTheLibraryLeavesTheProcessAlive) {
    const ThumbnailSize size{256, 192};
    const Bytes nv12 = pattern(size);
    Bytes jpeg(static_cast<size_t>(size.yuvBytes()));
    setenv("JPEGMEM", "1", 1);  // kilobytes that the library may take; for more it wants a file, which it cannot have
    for (int i = 0; i < 3; ++i) EXPECT_EQ(-1, compressThumbnail(nv12.data(), size, jpeg.data(), jpeg.size()));
    unsetenv("JPEGMEM");
    EXPECT_GT(compressThumbnail(nv12.data(), size, jpeg.data(), jpeg.size()), 0);
    for (const ThumbnailSize impossible : {ThumbnailSize{256, 0}, {256, 65502}, {0, 256}}) {
        EXPECT_EQ(-1, compressThumbnail(nullptr, impossible, nullptr, 0)) << impossible.height;
    }
}

TEST(ThumbnailSizes, FollowTheFrame) {
    const struct {
        int width, height, thumbnailHeight;
    } kCases[] = {{1920, 1080, 144}, {4000, 3000, 192}, {3000, 4000, 342}, {640, 640, 256}, {641, 5, 2}, {256, 1, 2}};
    for (const auto& test : kCases) {
        const sp<QuillHeifWriter> writer = new QuillHeifWriter;
        writer->initEncoder(test.width, test.height, test.width, test.height, FORMAT_NV12, 95, 0);
        EXPECT_EQ(size_t{256} * 3 / 2 * test.thumbnailHeight, writer->thumbnailCapacity()) << test.width;
        writer->close();
    }
}

}  // namespace
