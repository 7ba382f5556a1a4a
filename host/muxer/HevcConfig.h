#pragma once

#include <array>
#include <optional>
#include <vector>

#include "HevcSps.h"

namespace quill::host {

/** What a decoder needs before the first picture: the parameter sets, each without start code, and what they say. */
struct HevcConfig {
    static constexpr size_t kKinds = 3;

    std::array<std::vector<Bytes>, kKinds> parameterSets;  ///< VPS, SPS, PPS
    HevcSps sps;                                           ///< the first SPS

    /** Whether one of the sets is this one to the byte. */
    bool contains(const Nal& nal) const;
};

/** From codec data: parameter sets behind start codes. Nothing unless there is one of each kind that can be read. */
std::optional<HevcConfig> parseHevcConfig(ByteView codecData);

/** The decoder configuration record (ISO/IEC 14496-15, 8.3.3.1), body of `hvcC`, for samples with 4-byte lengths. */
void putHevcRecord(BoxWriter& writer, const HevcConfig& config);

/**
 * One coded picture from start codes to 4-byte lengths. Parameter sets repeated in it are left out, for `hvc1`
 * keeps them in the configuration. Nothing when the sample has no picture, one that decoding cannot start at, or
 * parameter sets other than the configuration's.
 */
std::optional<Bytes> toLengthPrefixed(ByteView sample, const HevcConfig& config);

}  // namespace quill::host
