#pragma once

#include <cstdint>

namespace quill::host {

/** The colors of a stream in the code points of ISO/IEC 23091-2, as VUI and `nclx` have them too. */
struct ColorAspects {
    static constexpr uint8_t kUnspecified = 2;

    uint8_t primaries = kUnspecified;
    uint8_t transfer = kUnspecified;
    uint8_t matrix = kUnspecified;
    bool fullRange = false;

    bool operator==(const ColorAspects& other) const {
        return primaries == other.primaries && transfer == other.transfer && matrix == other.matrix &&
               fullRange == other.fullRange;
    }
};

/** From the values of "color-standard", "color-transfer" and "color-range". 0 and unknown values are unspecified. */
ColorAspects colorAspectsFromKeys(int32_t standard, int32_t transfer, int32_t range);

/** R'G'B' to Y'CbCr, 8-bit, in units of 1/65536. The three luma factors add up to the exact range. */
struct RgbToYuv {
    static constexpr int kFractionBits = 16;

    int32_t y[3];
    int32_t cb[3];
    int32_t cr[3];
    int32_t lumaOffset;  ///< code of black: 0 in full range, 16 otherwise

    explicit RgbToYuv(const ColorAspects& aspects);
};

}  // namespace quill::host
