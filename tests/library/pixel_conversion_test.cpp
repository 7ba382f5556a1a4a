// Colours of RGBA frames as they are defined. What the other layouts give is held by their digests.
#include <gmock/gmock.h>

#include <array>

#include "Nv12Conversion.h"
#include "QuillHeifWriter.h"
#include "support/CameraFrames.h"
#include "support/LogCapture.h"

namespace {

using namespace android;
using namespace quill::test;
using testing::ElementsAre;

using Bytes = std::vector<uint8_t>;
constexpr uint8_t kUntouched = 0xA5;

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

/** Those that this kind of processor may have; one that is missing is as the next narrower. */
constexpr VectorWidth kWidths[] = {
#if defined(__x86_64__)
        VectorWidth::k128, VectorWidth::k256,
#endif
        kWidestVectors};

class PixelConversionByWidth : public testing::TestWithParam<VectorWidth> {};
INSTANTIATE_TEST_SUITE_P(, PixelConversionByWidth, testing::ValuesIn(kWidths));

// Colours are converted many at a time, and one whose sums come close to whole numbers sends its neighbours along the
// careful way. So each stands alone among as many pixels as go together at most, between pixels that take the fast way.
TEST_P(PixelConversionByWidth, RgbaOfEveryColourIsAsDefined) {
    constexpr size_t kTogether = 64, kRow = 256 * kTogether;
    constexpr uint8_t kPlain[] = {0, 1, 0, 0};
    const Geometry area{kRow, 1, kRow, 1};
    Bytes rgba(4 * kRow), nv12(nv12Bytes(area));
    for (size_t i = 0; i < 4 * kRow; ++i) rgba[i] = kPlain[i % 4];
    int differences = 0;
    for (size_t rg = 0; rg < 1u << 16; ++rg) {
        for (size_t i = 0; i < kRow; i += 2) {
            rgba[4 * i] = static_cast<uint8_t>(rg >> 8);
            rgba[4 * i + 1] = static_cast<uint8_t>(rg);
            rgba[4 * i + 2] = static_cast<uint8_t>(i / kTogether);
        }
        convertRgba8888(rgba.data(), area, nv12.data(), GetParam());
        for (size_t i = 0; i < kRow; i += kTogether) {
            const size_t r = rg >> 8, g = rg & 0xFF, b = i / kTogether;
            differences += nv12[i] != definedLuma(r, g, b);
            differences += nv12[kRow + i] != definedU(r, g, b);
            differences += nv12[kRow + i + 1] != definedV(r, g, b);
        }
    }
    EXPECT_EQ(0, differences);
}

TEST_P(PixelConversionByWidth, EveryLayoutIsAsWithTheWidest) {
    constexpr Geometry kArea{301, 9, 301, 9};
    Bytes frame(size_t{4} * 301 * 9);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i >> 3 ^ i);
    const auto converted = [&](auto convert, VectorWidth most) {
        Bytes nv12(nv12Bytes(kArea), kUntouched);
        convert(frame.data(), kArea, nv12.data(), most);
        return nv12;
    };
    for (const auto convert : {convertI420, convertP010, convertRgba8888}) {
        EXPECT_EQ(converted(convert, kWidestVectors), converted(convert, GetParam()));
    }
    Bytes narrow = frame, widest = frame;
    swapChromaPairs(narrow.data(), {300, 9, 301, 9}, GetParam());
    swapChromaPairs(widest.data(), {300, 9, 301, 9}, kWidestVectors);
    EXPECT_EQ(widest, narrow);
}

TEST(PixelConversion, UnknownLayoutIsRefused) {
    const LogCapture log;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    writer->initEncoder(7, 5, 7, 6, 7, 95, 0);
    EXPECT_EQ(-1, writer->saveYuvBuf(nullptr, nullptr));
    EXPECT_TRUE(log.has("E/QuillHeifWriter: saveYuvBuf: Color fmt not support 7."));
    writer->close();
}

}  // namespace
