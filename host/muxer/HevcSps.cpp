#include "HevcSps.h"

#include <algorithm>

namespace quill::host {

namespace {

constexpr unsigned kMaxSubLayersMinus1 = 6;
constexpr unsigned kMaxChromaFormat = 3;
constexpr unsigned kMaxBitDepthMinus8 = 8;
constexpr unsigned kMaxShortTermSets = 64;
constexpr uint32_t kMaxSide = 16888;  // of a picture of the highest level, 6.2
constexpr unsigned kMaxReferences = 16;
constexpr unsigned kMaxLongTermPictures = 32;
constexpr uint8_t kExtendedAspectRatio = 255;

// ISO/IEC 23000-22: a picture that does not specify its colors is sRGB in full-range BT.601 components.
constexpr ColorAspects kDefaultAspects{1, 13, 6, true};

HevcProfile readProfile(BitReader& reader) {
    HevcProfile profile;
    profile.spaceTierProfile = static_cast<uint8_t>(reader.bits(8));
    for (uint8_t& byte : profile.compatibility) byte = static_cast<uint8_t>(reader.bits(8));
    for (uint8_t& byte : profile.constraints) byte = static_cast<uint8_t>(reader.bits(8));
    profile.level = static_cast<uint8_t>(reader.bits(8));
    return profile;
}

/** The part of profile_tier_level() for the sub-layers. */
void skipSubLayerProfiles(BitReader& reader, unsigned subLayersMinus1) {
    constexpr unsigned kSlots = 8;  // the flags of fewer sub-layers are padded to this many
    constexpr unsigned kProfileBits = 88, kLevelBits = 8;
    if (subLayersMinus1 == 0) return;
    unsigned skipped = 0;
    for (unsigned i = 0; i < subLayersMinus1; ++i) {
        if (reader.flag()) skipped += kProfileBits;
        if (reader.flag()) skipped += kLevelBits;
    }
    reader.skip(2 * (kSlots - subLayersMinus1) + skipped);
}

/** Applies the conformance window to `size`; false if nothing is left. */
bool crop(uint64_t unit, uint64_t before, uint64_t after, uint32_t* size) {
    const uint64_t cut = unit * (before + after);
    if (cut >= *size) return false;
    *size -= static_cast<uint32_t>(cut);
    return true;
}

bool readSize(BitReader& reader, HevcSps* sps) {
    sps->width = reader.ue();
    sps->height = reader.ue();
    if (sps->width == 0 || sps->width > kMaxSide || sps->height == 0 || sps->height > kMaxSide) return false;
    if (!reader.flag()) return true;
    const uint32_t left = reader.ue(), right = reader.ue(), top = reader.ue(), bottom = reader.ue();
    const unsigned horizontalUnit = sps->chromaFormat == 1 || sps->chromaFormat == 2 ? 2 : 1;
    const unsigned verticalUnit = sps->chromaFormat == 1 ? 2 : 1;
    return crop(horizontalUnit, left, right, &sps->width) && crop(verticalUnit, top, bottom, &sps->height);
}

bool readBitDepths(BitReader& reader, HevcSps* sps) {
    const uint32_t luma = reader.ue(), chroma = reader.ue();
    if (luma > kMaxBitDepthMinus8 || chroma > kMaxBitDepthMinus8) return false;
    sps->lumaBits = static_cast<uint8_t>(8 + luma);
    sps->chromaBits = static_cast<uint8_t>(8 + chroma);
    return true;
}

void skipScalingLists(BitReader& reader) {
    constexpr unsigned kSizes = 4, kMatrices = 6, kMaxCoefficients = 64;
    for (unsigned size = 0; size < kSizes; ++size) {
        const unsigned coefficients = std::min(kMaxCoefficients, 1U << (4 + 2 * size));
        for (unsigned matrix = 0; matrix < kMatrices; matrix += size == 3 ? 3 : 1) {
            if (!reader.flag()) {
                reader.ue();  // copied from another matrix
                continue;
            }
            if (size > 1) reader.se();
            for (unsigned i = 0; reader.ok() && i < coefficients; ++i) reader.se();
        }
    }
}

/** The coding tools between the bit depths and the reference picture sets. */
bool skipCodingTools(BitReader& reader, unsigned subLayersMinus1, unsigned* pictureOrderBits) {
    const uint32_t pictureOrderBitsMinus4 = reader.ue();
    if (pictureOrderBitsMinus4 > 12) return false;
    *pictureOrderBits = pictureOrderBitsMinus4 + 4;
    const unsigned firstSubLayer = reader.flag() ? 0 : subLayersMinus1;
    for (unsigned i = firstSubLayer; i <= subLayersMinus1; ++i) {
        for (int field = 0; field < 3; ++field) reader.ue();  // decoded picture buffer
    }
    for (int field = 0; field < 6; ++field) reader.ue();  // block sizes and transform depths
    if (reader.flag() && reader.flag()) skipScalingLists(reader);
    reader.skip(2);  // asymmetric partitions, sample adaptive offset
    if (!reader.flag()) return reader.ok();
    reader.skip(8);  // PCM bit depths
    reader.ue();
    reader.ue();
    reader.flag();
    return reader.ok();
}

/** A set coded as a difference from the previous set. Returns the number of its pictures. */
uint32_t skipPredictedSet(BitReader& reader, uint32_t previousCount) {
    reader.flag();
    reader.ue();
    uint32_t count = 0;
    for (uint32_t i = 0; i <= previousCount; ++i) {
        const bool used = reader.flag();
        if (used || reader.flag()) ++count;
    }
    return count;
}

bool skipExplicitSet(BitReader& reader, uint32_t* count) {
    const uint32_t negative = reader.ue(), positive = reader.ue();
    if (negative > kMaxReferences || positive > kMaxReferences) return false;
    *count = negative + positive;
    for (uint32_t i = 0; i < *count; ++i) {
        reader.ue();
        reader.flag();
    }
    return true;
}

bool skipReferencePictures(BitReader& reader, unsigned pictureOrderBits) {
    const uint32_t sets = reader.ue();
    if (sets > kMaxShortTermSets) return false;
    uint32_t count = 0;
    for (uint32_t i = 0; reader.ok() && i < sets; ++i) {
        if (i > 0 && reader.flag()) {
            count = skipPredictedSet(reader, count);
        } else if (!skipExplicitSet(reader, &count)) {
            return false;
        }
    }
    if (!reader.flag()) return true;
    const uint32_t longTerm = reader.ue();
    if (longTerm > kMaxLongTermPictures) return false;
    reader.skip(longTerm * (pictureOrderBits + 1));
    return true;
}

/** The colors in the VUI, or the defaults. */
ColorAspects readAspects(BitReader& reader) {
    ColorAspects aspects = kDefaultAspects;
    if (!reader.flag()) return aspects;  // no VUI
    if (reader.flag() && reader.bits(8) == kExtendedAspectRatio) reader.skip(2 * 16);
    if (reader.flag()) reader.flag();    // overscan
    if (!reader.flag()) return aspects;  // no video signal type
    reader.skip(3);                      // video format
    aspects.fullRange = reader.flag();
    if (!reader.flag()) return aspects;
    aspects.primaries = static_cast<uint8_t>(reader.bits(8));
    aspects.transfer = static_cast<uint8_t>(reader.bits(8));
    aspects.matrix = static_cast<uint8_t>(reader.bits(8));
    return aspects;
}

}  // namespace

std::optional<HevcSps> parseSps(const Nal& nal) {
    const Bytes payload = rawPayload(nal);
    BitReader reader(payload);
    HevcSps sps;
    reader.skip(4);  // VPS id
    const unsigned subLayersMinus1 = reader.bits(3);
    if (subLayersMinus1 > kMaxSubLayersMinus1) return std::nullopt;
    sps.temporalLayers = static_cast<uint8_t>(subLayersMinus1 + 1);
    sps.temporalIdNested = reader.flag();
    sps.profile = readProfile(reader);
    skipSubLayerProfiles(reader, subLayersMinus1);
    reader.ue();  // SPS id
    const uint32_t chromaFormat = reader.ue();
    if (chromaFormat > kMaxChromaFormat) return std::nullopt;
    sps.chromaFormat = static_cast<uint8_t>(chromaFormat);
    if (chromaFormat == kMaxChromaFormat) reader.flag();  // planes coded separately
    unsigned pictureOrderBits = 0;
    if (!readSize(reader, &sps) || !readBitDepths(reader, &sps)) return std::nullopt;
    if (!skipCodingTools(reader, subLayersMinus1, &pictureOrderBits)) return std::nullopt;
    if (!skipReferencePictures(reader, pictureOrderBits)) return std::nullopt;
    reader.skip(2);  // temporal motion vectors, strong intra smoothing
    sps.aspects = readAspects(reader);
    if (!reader.ok()) return std::nullopt;
    return sps;
}

}  // namespace quill::host
