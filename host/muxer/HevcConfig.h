#pragma once

#include <array>
#include <optional>
#include <vector>

#include "HevcSps.h"

namespace quill::host {

/** What a decoder needs before the first picture: the parameter sets without start codes, and the parsed SPS. */
struct HevcConfig {
    static constexpr size_t kKinds = 3;

    std::array<std::vector<Bytes>, kKinds> parameterSets;  ///< VPS, SPS, PPS
    HevcSps sps;                                           ///< the first SPS

    /** True if one of the sets is identical to `nal`. */
    bool contains(const Nal& nal) const;
};

/** From codec data: parameter sets with start codes. Nothing if a kind is missing or the SPS is invalid. */
std::optional<HevcConfig> parseHevcConfig(ByteView codecData);

/** The decoder configuration record (ISO/IEC 14496-15, 8.3.3.1), body of `hvcC`, for samples with 4-byte lengths. */
void putHevcRecord(BoxWriter& writer, const HevcConfig& config);

/**
 * Converts one coded picture from start codes to 4-byte lengths. Parameter sets in it are left out, because `hvc1`
 * keeps them in the configuration. Nothing if the sample has no picture, a picture that decoding cannot start at, or
 * other parameter sets than the configuration.
 */
std::optional<Bytes> toLengthPrefixed(ByteView sample, const HevcConfig& config);

}  // namespace quill::host
