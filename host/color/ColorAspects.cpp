#include "ColorAspects.h"

#include <cmath>

#include <media/stagefright/MediaCodecConstants.h>

namespace quill::host {

namespace {

struct StandardRow {
    int32_t standard;
    uint8_t primaries;
    uint8_t matrix;
};

constexpr StandardRow kStandards[] = {
        {COLOR_STANDARD_BT709, 1, 1},
        {COLOR_STANDARD_BT601_PAL, 5, 5},   // 625 lines
        {COLOR_STANDARD_BT601_NTSC, 6, 6},  // 525 lines
        {COLOR_STANDARD_BT2020, 9, 9},
};

struct TransferRow {
    int32_t key;
    uint8_t transfer;
};

/** sRGB, which has no name among the platform's public constants. */
constexpr int32_t kTransferSrgb = 2;

constexpr TransferRow kTransfers[] = {
        {COLOR_TRANSFER_LINEAR, 8},  {kTransferSrgb, 13},      {COLOR_TRANSFER_SDR_VIDEO, 6},
        {COLOR_TRANSFER_ST2084, 16}, {COLOR_TRANSFER_HLG, 18},
};

struct LumaWeights {
    uint8_t matrix;
    double red;
    double blue;
};

constexpr LumaWeights kBt601 = {5, 0.299, 0.114};
constexpr LumaWeights kLumaWeights[] = {{1, 0.2126, 0.0722}, kBt601, {6, 0.299, 0.114}, {9, 0.2627, 0.0593}};

LumaWeights weightsOf(uint8_t matrix) {
    for (const LumaWeights& row : kLumaWeights) {
        if (row.matrix == matrix) return row;
    }
    return kBt601;
}

/** Rounds three factors so that they add up to exactly `sum`. Green, the largest weight, takes the remainder. */
void setFactors(int32_t (&factors)[3], double red, double blue, double sum) {
    constexpr double kOne = 1 << RgbToYuv::kFractionBits;
    factors[0] = static_cast<int32_t>(std::lround(red * kOne));
    factors[2] = static_cast<int32_t>(std::lround(blue * kOne));
    factors[1] = static_cast<int32_t>(std::lround(sum * kOne)) - factors[0] - factors[2];
}

}  // namespace

ColorAspects colorAspectsFromKeys(int32_t standard, int32_t transfer, int32_t range) {
    ColorAspects aspects;
    for (const StandardRow& row : kStandards) {
        if (row.standard != standard) continue;
        aspects.primaries = row.primaries;
        aspects.matrix = row.matrix;
    }
    for (const TransferRow& row : kTransfers) {
        if (row.key == transfer) aspects.transfer = row.transfer;
    }
    aspects.fullRange = range == COLOR_RANGE_FULL;
    return aspects;
}

RgbToYuv::RgbToYuv(const ColorAspects& aspects) : lumaOffset(aspects.fullRange ? 0 : 16) {
    const LumaWeights weights = weightsOf(aspects.matrix);
    const double luma = aspects.fullRange ? 1.0 : 219.0 / 255.0;
    const double chroma = aspects.fullRange ? 0.5 : 0.5 * 224.0 / 255.0;
    setFactors(y, weights.red * luma, weights.blue * luma, luma);
    setFactors(cb, -weights.red * chroma / (1.0 - weights.blue), chroma, 0.0);
    setFactors(cr, chroma, -weights.blue * chroma / (1.0 - weights.red), 0.0);
}

}  // namespace quill::host
