// The thumbnail of a frame: reduced as the definition says, and compressed.
#include <gmock/gmock.h>
#include <stdlib.h>

#include <functional>
#include <random>

#include "Downscale.h"
#include "PixelConversion.h"
#include "QuillHeifWriter.h"
#include "ThumbnailJpeg.h"
#include "support/CameraFrames.h"
#include "support/JpegReader.h"

namespace {

using namespace android;
using namespace quill::test;
using Bytes = std::vector<uint8_t>;

/** An NV12 frame whose buffer ends where a frame of its area may be read to. */
struct Frame {
    Frame(const Geometry& size, const std::function<int(int, int)>& luma)
            : geometry(size), bytes(AllottedArea{size.stride, size.sliceHeight}.nv12Bytes()) {
        std::minstd_rand random(3);
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 8);
        for (int y = 0; luma && y < size.sliceHeight; ++y) {
            for (int x = 0; x < size.stride; ++x) {
                bytes[static_cast<size_t>(y) * size.stride + x] = static_cast<uint8_t>(luma(x, y));
            }
        }
    }
    Nv12Frame view() const {
        return {bytes.data(), geometry.width, geometry.height, geometry.stride, geometry.sliceHeight};
    }
    Geometry geometry;
    Bytes bytes;
};

int definedSample(const Frame& frame, int x, int y) {
    const auto at = [&](int column, int row) {
        return frame.bytes[static_cast<size_t>(row) * frame.geometry.stride + column];
    };
    if (x + 12 >= frame.geometry.width || y + 12 >= frame.geometry.height) return at(x, y);
    double sum = 0;
    for (int i = 0; i < 16; ++i) sum += at(x + i % 4 * 3, y + i / 4 * 3) / 16.0;
    return static_cast<int>(sum);
}

void defineThumbnail(const Frame& frame, const ThumbnailSize& size, Bytes& out) {
    const Geometry& g = frame.geometry;
    const float xScale = static_cast<float>(g.width) / static_cast<float>(size.width);
    const float yScale = static_cast<float>(g.height) / static_cast<float>(size.height);
    for (int j = 0; j < size.height; ++j) {
        for (int i = 0; i < size.width; ++i) {
            const int x = std::min(static_cast<int>(xScale * static_cast<float>(i)), g.width - 1);
            const int y = std::min(static_cast<int>(yScale * static_cast<float>(j)), g.height - 1);
            out[j * size.width + i] = static_cast<uint8_t>(definedSample(frame, x, y));
            for (int k = 0; k < 2; ++k) {
                const int source = g.stride * g.sliceHeight + 2 * (x / 2) + g.stride * (y / 2) + k;
                uint8_t& sum = out[size.width * size.height + (i & ~1) + size.width * (j / 2) + k];
                const double added = sum + static_cast<double>(frame.bytes[source] >> 2);
                sum = static_cast<uint8_t>(added >= 255 ? 254 : added);
            }
        }
    }
}

/** An NV12 thumbnail with something to see in all three planes. */
Bytes pattern(const ThumbnailSize& size) {
    Bytes nv12(static_cast<size_t>(size.yuvBytes()));
    for (int i = 0; i < size.lumaSamples(); ++i) {
        nv12[i] = static_cast<uint8_t>(60 + i % size.width / 4 + i / size.width % 128);
    }
    for (int i = 0; i < size.lumaSamples() / 2; ++i) {
        nv12[size.lumaSamples() + i] = static_cast<uint8_t>(i % 2 == 0 ? 90 + i % size.width / 8 : 160);
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

TEST(Downscaling, SamplesAreFilteredUpToThirteenFromTheEdge) {
    const Frame frame({40, 30, 40, 30}, [](int x, int y) { return x + 3 * y; });
    constexpr int kMiddle = 18;  // mean of 0, 3, 6, 9 to the right, and three times that further down
    EXPECT_EQ(27 + 3 * 5 + kMiddle, sampleLuma(frame.view(), 27, 5)) << "width - 13";
    EXPECT_EQ(28 + 3 * 5, sampleLuma(frame.view(), 28, 5)) << "width - 12";
    EXPECT_EQ(4 + 3 * 17 + kMiddle, sampleLuma(frame.view(), 4, 17)) << "height - 13";
    EXPECT_EQ(4 + 3 * 18, sampleLuma(frame.view(), 4, 18)) << "height - 12";
    EXPECT_EQ(39 + 3 * 29, sampleLuma(frame.view(), 39, 29));
}

TEST(Downscaling, WholeThumbnailsAreAsDefined) {
    const struct {
        Geometry frame;
        ThumbnailSize size;
    } kCases[] = {
            {{640, 480, 640, 480}, {256, 192}}, {{1001, 701, 1024, 704}, {256, 180}},
            {{333, 517, 333, 517}, {256, 398}}, {{257, 193, 260, 201}, {256, 192}},
            {{100, 75, 128, 80}, {256, 192}},   {{13, 13, 13, 13}, {256, 256}},
            {{14, 12, 15, 13}, {256, 220}},     {{1, 1, 1, 1}, {256, 256}},
            {{2, 1, 3, 2}, {256, 128}},         {{1, 3, 1, 3}, {256, 768}},
            {{600, 10, 600, 10}, {256, 4}},     {{600, 2, 600, 2}, {256, 0}},
    };
    for (const auto& test : kCases) {
        const Frame frame(test.frame, nullptr);
        Bytes expected(static_cast<size_t>(test.size.yuvBytes())), actual = expected;
        defineThumbnail(frame, test.size, expected);
        downscaleNv12(frame.view(), test.size, actual.data());
        EXPECT_TRUE(expected == actual) << test.frame.width << " x " << test.frame.height;
    }
}

TEST(Downscaling, ChromaSumsStopAt254) {
    const Frame frame({2, 2, 2, 2}, [](int, int) { return 0; });
    Bytes source = frame.bytes;
    source[4] = 255;
    source[5] = 7;
    Bytes thumbnail(ThumbnailSize{2, 2}.yuvBytes());
    downscaleNv12({source.data(), 2, 2, 2, 2}, {2, 2}, thumbnail.data());
    EXPECT_EQ(252, thumbnail[4]) << "four quarters, each rounded down";
    EXPECT_EQ(4, thumbnail[5]);
    thumbnail[4] = 2;
    thumbnail[5] = 251;
    downscaleNv12({source.data(), 2, 2, 2, 2}, {2, 2}, thumbnail.data());
    EXPECT_EQ(254, thumbnail[4]);
    EXPECT_EQ(254, thumbnail[5]) << "255 becomes 254";
}

TEST(ThumbnailJpeg, IsBaseline420OfEveryHeight) {
    for (const int height : {2, 4, 14, 16, 18, 30, 144, 192, 342, 65500}) {
        const ThumbnailSize size{256, height};
        const Bytes nv12 = pattern(size);
        Bytes jpeg(static_cast<size_t>(size.yuvBytes()));
        const int bytes = compressThumbnail(nv12.data(), size, jpeg.data(), jpeg.size());
        // A strip of two rows is less than the tables in front of it.
        if (height == 2 && bytes == -1) continue;
        ASSERT_GT(bytes, 0) << height;
        jpeg.resize(static_cast<size_t>(bytes));
        const ReadJpeg read = readJpeg(jpeg);
        EXPECT_TRUE(read.baseline420);
        EXPECT_EQ(0, read.warnings);
        EXPECT_EQ(256, read.width);
        EXPECT_EQ(height, read.height);
        EXPECT_LT(distance(nv12, read), 4) << height;
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
        const Frame frame({test.width, test.height, test.width, test.height}, [](int x, int y) { return x + y; });
        const sp<QuillHeifWriter> writer = new QuillHeifWriter;
        writer->initEncoder(test.width, test.height, test.width, test.height, FORMAT_NV12, 95, 0);
        ASSERT_EQ(size_t{256} * 3 / 2 * test.thumbnailHeight, writer->thumbnailCapacity());
        Bytes source = frame.bytes, jpeg(writer->thumbnailCapacity());
        const int bytes = writer->creatThmb(source.data(), jpeg.data());
        if (test.thumbnailHeight > 2) {
            ASSERT_GT(bytes, 0);
            jpeg.resize(static_cast<size_t>(bytes));
            EXPECT_EQ(test.thumbnailHeight, readJpeg(jpeg).height);
        }
        writer->close();
    }
}

}  // namespace
