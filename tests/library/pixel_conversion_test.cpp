// Colors of RGBA frames as they are defined. What the other layouts give is held by their digests.
#include <gtest/gtest.h>

#include "Nv12Conversion.h"
#include "support/CameraFrames.h"
#include "support/Watched.h"

namespace {

using namespace android;
using namespace quill::test;

using Bytes = std::vector<uint8_t>;

/** A sum in double precision, as it is stored. Products in memory cannot be fused into it. */
int defined(const double (&weights)[4], double r, double g, double b) {
    const volatile double products[] = {weights[0] * r, weights[1] * g, weights[2] * b};
    const int truncated = static_cast<int>(products[0] + products[1] + products[2] + weights[3]);
    return truncated >= 255 ? 255 : truncated & 0xFF;
}

/** Those that this kind of processor may have; one that is missing is as the next narrower. */
constexpr VectorWidth kWidths[] = {
#if defined(__x86_64__)
        VectorWidth::k128, VectorWidth::k256,
#endif
        kWidestVectors};

class PixelConversionByWidth : public testing::TestWithParam<VectorWidth> {};
INSTANTIATE_TEST_SUITE_P(, PixelConversionByWidth, testing::ValuesIn(kWidths),
                         [](const auto& width) { return std::to_string(128 << static_cast<int>(width.param)); });

// A run that watches memory takes some of the pairs of red and green.
const size_t kStep = isWatched() ? 41 : 1;

// Colors are converted many at a time, and one whose sums come close to whole numbers sends its neighbours along the
// careful way. So each stands alone among as many pixels as go together at most, between pixels that take the fast way.
TEST_P(PixelConversionByWidth, RgbaOfEveryColorIsAsDefined) {
    constexpr size_t kTogether = 64, kRow = 256 * kTogether;
    constexpr double kY[] = {0.299, 0.587, 0.114, 0}, kU[] = {-0.14713, -0.28886, 0.436, 128},
                     kV[] = {0.615, -0.51498, -0.10001, 128};
    const Geometry area{kRow, 1, kRow, 1};
    Bytes rgba(4 * kRow), nv12(nv12Bytes(area));
    for (size_t i = 0; i < kRow; ++i) rgba[4 * i + 1] = 1;
    int differences = 0;
    for (size_t rg = 0; rg < 1u << 16; rg += kStep) {
        const size_t r = rg >> 8, g = rg & 0xFF;
        for (size_t i = 0; i < kRow; i += 2) {
            rgba[4 * i] = static_cast<uint8_t>(r);
            rgba[4 * i + 1] = static_cast<uint8_t>(g);
            rgba[4 * i + 2] = static_cast<uint8_t>(i / kTogether);
        }
        convertRgba8888(rgba.data(), area, nv12.data(), GetParam());
        for (size_t i = 0, b = 0; i < kRow; i += kTogether, ++b) {
            differences += nv12[i] != defined(kY, r, g, b);
            differences += nv12[kRow + i] != defined(kU, r, g, b);
            differences += nv12[kRow + i + 1] != defined(kV, r, g, b);
        }
    }
    EXPECT_EQ(0, differences);
}

void swapInCopy(const uint8_t* frame, const FrameGeometry& g, uint8_t* out, VectorWidth most) {
    std::copy_n(frame, nv12Bytes(g) - 1, out);
    swapChromaPairs(out, {g.width - 1, g.height, g.stride, g.sliceHeight}, most);
}

TEST_P(PixelConversionByWidth, EveryLayoutIsAsWithTheWidest) {
    constexpr Geometry kArea{301, 9, 301, 9};
    Bytes frame(size_t{4} * 301 * 9);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * i >> 3 ^ i);
    for (const auto convert : {convertI420, convertP010, convertRgba8888, swapInCopy}) {
        Bytes narrow(nv12Bytes(kArea), 0xA5), widest = narrow;
        convert(frame.data(), kArea, narrow.data(), GetParam());
        convert(frame.data(), kArea, widest.data(), kWidestVectors);
        EXPECT_EQ(widest, narrow);
    }
}

}  // namespace
