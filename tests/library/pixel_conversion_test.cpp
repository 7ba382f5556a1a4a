// Frames of every format to 8-bit NV12, byte for byte what the definitions say.
#include <gmock/gmock.h>

#include <array>
#include <random>

#include "PixelConversion.h"
#include "QuillHeifWriter.h"
#include "support/CameraFrames.h"
#include "support/LogCapture.h"

namespace {

using namespace android;
using namespace quill::test;
using testing::ElementsAre;

using Bytes = std::vector<uint8_t>;
constexpr uint8_t kUntouched = 0xA5;
constexpr size_t kGuard = 64;

/** One component times its weight in double precision, from a table: products that cannot be fused into a sum. */
class Weight {
  public:
    explicit Weight(double weight) {
        for (size_t i = 0; i < mProducts.size(); ++i) mProducts[i] = static_cast<double>(i) * weight;
    }
    double operator*(size_t component) const { return mProducts[component]; }

  private:
    std::array<double, 256> mProducts{};
};

int stored(double sum) {
    const int truncated = static_cast<int>(sum);
    return truncated >= 255 ? 255 : truncated & 0xFF;
}

int definedLuma(size_t r, size_t g, size_t b) {
    static const Weight kR(0.299), kG(0.587), kB(0.114);
    return stored(kR * r + kG * g + kB * b);
}
int definedU(size_t r, size_t g, size_t b) {
    static const Weight kR(-0.14713), kG(-0.28886), kB(0.436);
    return stored(kR * r + kG * g + kB * b + 128.0);
}
int definedV(size_t r, size_t g, size_t b) {
    static const Weight kR(0.615), kG(-0.51498), kB(-0.10001);
    return stored(kR * r + kG * g + kB * b + 128.0);
}

void defineI420(const Bytes& source, size_t stride, size_t rows, Bytes& out) {
    const size_t n = stride * rows, q = n / 4;
    for (size_t i = 0; i < n; ++i) out[i] = source[i];
    for (size_t k = 0; k < q; ++k) {
        out[n + 2 * k] = source[n + k];
        out[n + 2 * k + 1] = source[n + q + k];
    }
}

void defineP010(const Bytes& source, size_t stride, size_t rows, Bytes& out) {
    const size_t n = stride * rows;
    for (size_t i = 0; i < n; ++i) out[i] = source[2 * i + 1];
    for (size_t r = 0; r < rows / 2; ++r) {
        for (size_t c = 0; c < stride / 2; ++c) {
            out[n + r * stride + 2 * c] = source[2 * n + 2 * r * stride + 4 * c + 1];
            out[n + r * stride + 2 * c + 1] = source[2 * n + 2 * r * stride + 4 * c + 3];
        }
    }
}

void defineRgba(const Bytes& source, size_t stride, size_t rows, Bytes& out) {
    size_t chroma = stride * rows;
    for (size_t i = 0; i < stride * rows; ++i) {
        const uint8_t* const p = &source[4 * i];
        out[i] = static_cast<uint8_t>(definedLuma(p[0], p[1], p[2]));
        if (i / stride % 2 != 0 || i % stride % 2 != 0) continue;
        out[chroma++] = static_cast<uint8_t>(definedU(p[0], p[1], p[2]));
        out[chroma++] = static_cast<uint8_t>(definedV(p[0], p[1], p[2]));
    }
}

void define(InputColorFormat format, const Bytes& source, const Geometry& geometry, Bytes& out) {
    const size_t stride = static_cast<size_t>(geometry.stride), rows = static_cast<size_t>(geometry.sliceHeight);
    if (format == FORMAT_I420) return defineI420(source, stride, rows, out);
    if (format == FORMAT_P010) return defineP010(source, stride, rows, out);
    if (format == FORMAT_RGBA8888) return defineRgba(source, stride, rows, out);
    std::copy(source.begin(), source.begin() + static_cast<ptrdiff_t>(3 * stride * rows / 2), out.begin());
}

Bytes noise(size_t count) {
    std::minstd_rand random(static_cast<unsigned>(count) + 1);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 8);
    return bytes;
}

Bytes destination(const Geometry& geometry) {
    return Bytes(AllottedArea{geometry.stride, geometry.sliceHeight}.nv12Bytes() + kGuard, kUntouched);
}

/** A writer that knows the geometry; whether its encoder could be set up is of no matter here. */
struct Converter {
    Converter(const Geometry& geometry, int format) : writer(new QuillHeifWriter) {
        writer->initEncoder(geometry.width, geometry.height, geometry.stride, geometry.sliceHeight, format, 95, 0);
    }
    ~Converter() { writer->close(); }
    const sp<QuillHeifWriter> writer;
};

// Odd, padded, and with fewer than the four luma samples that share a chroma pair.
constexpr Geometry kGeometries[] = {
        {8, 6, 8, 6}, {7, 5, 7, 5}, {9, 7, 12, 10},   {5, 3, 7, 4},     {6, 5, 7, 7},
        {1, 1, 1, 1}, {3, 1, 3, 1}, {1, 3, 1, 3},     {2, 1, 2, 1},     {1, 1, 4, 1},
        {1, 2, 1, 5}, {2, 2, 2, 2}, {65, 63, 65, 63}, {61, 41, 64, 48}, {64, 64, 65, 65},
};

// Colours are converted many at a time, and one whose sums come close to whole numbers sends its neighbours along the
// careful way. So each stands alone among as many pixels as go together at most, between pixels that send nobody.
TEST(PixelConversion, RgbaOfEveryColourIsAsDefined) {
    constexpr size_t kTogether = 64, kRow = 256 * kTogether;
    constexpr uint8_t kPlain[] = {0, 1, 0, 0};
    const AllottedArea area{kRow, 1};
    Bytes rgba(4 * kRow), nv12(area.nv12Bytes());
    for (size_t i = 0; i < 4 * kRow; ++i) rgba[i] = kPlain[i % 4];
    int differences = 0;
    for (size_t rg = 0; rg < 1u << 16; ++rg) {
        for (size_t i = 0; i < kRow; i += 2) {
            rgba[4 * i] = static_cast<uint8_t>(rg >> 8);
            rgba[4 * i + 1] = static_cast<uint8_t>(rg);
            rgba[4 * i + 2] = static_cast<uint8_t>(i / kTogether);
        }
        convertRgba8888(rgba.data(), area, nv12.data());
        for (size_t i = 0; i < kRow; i += kTogether) {
            const size_t r = rg >> 8, g = rg & 0xFF, b = i / kTogether;
            differences += nv12[i] != definedLuma(r, g, b);
            differences += nv12[kRow + i] != definedU(r, g, b);
            differences += nv12[kRow + i + 1] != definedV(r, g, b);
        }
    }
    EXPECT_EQ(0, differences);
}

TEST(PixelConversion, RgbaWorkedColours) {
    const auto yuv = [](uint8_t r, uint8_t g, uint8_t b) {
        constexpr size_t kSide = 64, kLuma = kSide * kSide;
        Bytes pixels, nv12(AllottedArea{kSide, kSide}.nv12Bytes());
        for (size_t i = 0; i < kLuma; ++i) pixels.insert(pixels.end(), {r, g, b, 9});
        convertRgba8888(pixels.data(), {kSide, kSide}, nv12.data());
        return std::vector<int>{nv12[kLuma - 1], nv12[kLuma * 3 / 2 - 2], nv12[kLuma * 3 / 2 - 1]};
    };
    EXPECT_THAT(yuv(255, 255, 255), ElementsAre(255, 128, 128));
    EXPECT_THAT(yuv(0, 0, 0), ElementsAre(0, 128, 128));
    EXPECT_THAT(yuv(0, 255, 255), ElementsAre(178, 165, 228)) << "-28 keeps its low eight bits";
    EXPECT_THAT(yuv(255, 0, 0), ElementsAre(76, 90, 255));
}

TEST(PixelConversion, P010KeepsTheHighByteOfEverySample) {
    constexpr int kSide = 512;  // luma holds every value four times, U and V once each
    constexpr size_t kLuma = kSide * kSide;
    constexpr unsigned kInV = 0x5A3C;
    Bytes p010;
    const auto put = [&p010](size_t value) {
        p010.push_back(static_cast<uint8_t>(value));
        p010.push_back(static_cast<uint8_t>(value >> 8));
    };
    for (size_t i = 0; i < kLuma; ++i) put(i);
    for (size_t pair = 0; pair < kLuma / 4; ++pair) {
        put(pair);
        put(pair ^ kInV);
    }
    Bytes nv12(AllottedArea{kSide, kSide}.nv12Bytes());
    convertP010(p010.data(), {kSide, kSide}, nv12.data());
    EXPECT_EQ(0x03, nv12[0x03FF]);
    EXPECT_EQ(0xFF, nv12[0xFFC0]);
    int differences = 0;
    for (size_t i = 0; i < kLuma; ++i) differences += nv12[i] != (i >> 8 & 0xFF);
    for (size_t pair = 0; pair < kLuma / 4; ++pair) {
        differences += nv12[kLuma + 2 * pair] != pair >> 8;
        differences += nv12[kLuma + 2 * pair + 1] != (pair ^ kInV) >> 8;
    }
    EXPECT_EQ(0, differences);
}

TEST(PixelConversion, EveryFormatAndSizeIsAsDefinedAndStaysInsideItsBuffers) {
    for (const InputColorFormat format : {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21}) {
        for (const Geometry& geometry : kGeometries) {
            SCOPED_TRACE(testing::Message()
                         << "format " << format << ", " << geometry.stride << " x " << geometry.sliceHeight);
            Bytes source = noise(frameBytes(format, geometry));
            Bytes expected = destination(geometry), actual = expected;
            define(format, source, geometry, expected);
            const Converter converter(geometry, format);
            EXPECT_EQ(1, converter.writer->saveYuvBuf(source.data(), actual.data()));
            EXPECT_EQ(expected, actual);
            EXPECT_EQ(Bytes(kGuard, kUntouched), Bytes(actual.end() - kGuard, actual.end())) << "behind nv12Bytes()";

            Bytes single = destination(geometry);
            if (format == FORMAT_I420) converter.writer->convertYuvI420ToNV12(source.data(), single.data());
            if (format == FORMAT_P010) converter.writer->convertP010ToNV12(source.data(), single.data());
            if (format == FORMAT_RGBA8888) converter.writer->convertRGBA8888ToNV12(source.data(), single.data());
            EXPECT_TRUE(single == expected || format == FORMAT_NV12 || format == FORMAT_NV21);
        }
    }
}

TEST(PixelConversion, UnknownFormatIsRefused) {
    const Geometry geometry{8, 8, 8, 8};
    Bytes source = noise(frameBytes(FORMAT_RGBA8888, geometry)), nv12 = destination(geometry);
    const Converter converter(geometry, 7);
    const LogCapture log;
    EXPECT_EQ(-1, converter.writer->saveYuvBuf(source.data(), nv12.data()));
    EXPECT_THAT(log.lines(), ElementsAre("E/QuillHeifWriter: saveYuvBuf: Color fmt not support 7."));
    EXPECT_EQ(destination(geometry), nv12);
}

TEST(PixelConversion, SplitSeparatesPlanes) {
    const Bytes nv12 = {1, 2, 3, 4, 5, 6, 7, 8, 10, 20, 11, 21};
    Bytes y(8), u(3, kUntouched), v(3, kUntouched);
    splitNv12(nv12.data(), 8, y.data(), u.data(), v.data());
    EXPECT_THAT(y, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_THAT(u, ElementsAre(10, 11, kUntouched));
    EXPECT_THAT(v, ElementsAre(20, 21, kUntouched));
    splitNv12(nv12.data(), 3, y.data(), nullptr, nullptr);  // fewer than four samples have no chroma
}

}  // namespace
