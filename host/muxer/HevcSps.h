#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "ColorAspects.h"
#include "HevcNal.h"

namespace quill::host {

/** The general part of profile_tier_level(), byte for byte as in the decoder configuration record. */
struct HevcProfile {
    uint8_t spaceTierProfile = 0;
    std::array<uint8_t, 4> compatibility{};
    std::array<uint8_t, 6> constraints{};
    uint8_t level = 0;

    /** True if a Main or Main Still Picture decoder can decode it: 8 bits, 4:2:0. */
    bool isMain() const {
        constexpr unsigned kMain = 1, kMainStill = 3;
        const unsigned idc = spaceTierProfile & 0x1F;
        const unsigned compatible = compatibility[0] >> (7 - kMain) | compatibility[0] >> (7 - kMainStill);
        return idc == kMain || idc == kMainStill || (compatible & 1) != 0;
    }
};

/** The parts of a sequence parameter set that a still image needs (ITU-T H.265, 7.3.2.2). */
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

/** Nothing if the NAL unit is too short or has values out of range. */
std::optional<HevcSps> parseSps(const Nal& nal);

}  // namespace quill::host
