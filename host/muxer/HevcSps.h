#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "ColorAspects.h"
#include "HevcNal.h"

namespace quill::host {

/** The general part of profile_tier_level(), byte for byte as the decoder configuration record repeats it. */
struct HevcProfile {
    uint8_t spaceTierProfile = 0;
    std::array<uint8_t, 4> compatibility{};
    std::array<uint8_t, 6> constraints{};
    uint8_t level = 0;

    /** Whether a Main or Main Still Picture decoder can play it: 8 bits, 4:2:0. */
    bool isMain() const {
        constexpr unsigned kMain = 1, kMainStill = 3;
        const unsigned idc = spaceTierProfile & 0x1F;
        const unsigned compatible = compatibility[0] >> (7 - kMain) | compatibility[0] >> (7 - kMainStill);
        return idc == kMain || idc == kMainStill || (compatible & 1) != 0;
    }
};

/** What a still image needs to know of a sequence parameter set (ITU-T H.265, 7.3.2.2). */
struct HevcSps {
    HevcProfile profile;
    uint8_t temporalLayers = 1;
    bool temporalIdNested = false;
    uint8_t chromaFormat = 1;
    uint8_t lumaBits = 8;
    uint8_t chromaBits = 8;
    uint32_t width = 0;  ///< of the decoder's output: inside the conformance window
    uint32_t height = 0;
    ColorAspects aspects;
};

/** Nothing when the NAL unit ends too early or holds values out of range. */
std::optional<HevcSps> parseSps(const Nal& nal);

}  // namespace quill::host
