#define LOG_TAG "HeicEncoderInfoManager"

#include <string.h>

#include <charconv>
#include <regex>

#include <log/log.h>
#include <media/MediaCodecInfo.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "HeicEncoderInfoManager.h"

namespace android {
namespace camera3 {

namespace {

// Either separator is met in the field: 64x64-4096x2304 and 64*64-4096*2304.
constexpr char kSizeRangePattern[] = "([0-9]+)[*x]([0-9]+)-([0-9]+)[*x]([0-9]+)";
constexpr char kFrameRateNamePattern[] = "measured-frame-rate-([0-9]+)[*x]([0-9]+)-range";
constexpr char kFrameRatePattern[] = "([0-9]+)-([0-9]+)";
constexpr char kConstantQualityPattern[] = "(^|,)CQ($|,)";

bool takesOneTile(const IntPair& minSize, const IntPair& maxSize) {
    return maxSize.first >= kTileSide && maxSize.second >= kTileSide && minSize.first <= kTileSide &&
           minSize.second <= kTileSide;
}

bool readInt(const std::csub_match& digits, int32_t* number) {
    return std::from_chars(digits.first, digits.second, *number).ec == std::errc{};
}

/** Two captures as base-10 ints; false, and nothing stored, for a number that no int holds. */
bool readIntPair(const std::csub_match& first, const std::csub_match& second, IntPair* pair) {
    IntPair read;
    if (!readInt(first, &read.first) || !readInt(second, &read.second)) return false;
    *pair = read;
    return true;
}

/** Matches the whole of `text` against a pattern of two captures and reads both. */
bool matchIntPair(const char* text, const char* pattern, IntPair* pair) {
    std::cmatch match;
    return std::regex_match(text, match, std::regex(pattern)) && match.size() == 3 &&
           readIntPair(match[1], match[2], pair);
}

/** False, and nothing stored, for a text that is no size range or has a number in it that no int holds. */
bool parseSizeRange(const char* text, IntPair* minSize, IntPair* maxSize) {
    std::cmatch match;
    if (!std::regex_match(text, match, std::regex(kSizeRangePattern)) || match.size() != 5) return false;
    IntPair smallest;
    if (!readIntPair(match[1], match[2], &smallest) || !readIntPair(match[3], match[4], maxSize)) return false;
    *minSize = smallest;
    return true;
}

}  // namespace

sp<AMessage> HeicEncoderInfoManager::getCodecDetails(sp<IMediaCodecList> codecsList, const char* name) {
    const ssize_t index = codecsList->findCodecByType(name, true /* encoder */);
    if (index < 0) return nullptr;

    const sp<MediaCodecInfo> info = codecsList->getCodecInfo(static_cast<size_t>(index));
    if (info == nullptr) {
        ALOGE("%s: Failed to get codec info for %s", __FUNCTION__, name);
        return nullptr;
    }
    const sp<MediaCodecInfo::Capabilities> caps = info->getCapabilitiesFor(name);
    if (caps == nullptr) {
        ALOGE("%s: Failed to get capabilities for codec %s", __FUNCTION__, name);
        return nullptr;
    }
    const sp<AMessage> details = caps->getDetails();
    if (details == nullptr) ALOGE("%s: Failed to get details for codec %s", __FUNCTION__, name);
    return details;
}

bool HeicEncoderInfoManager::getHevcCodecDetails(sp<IMediaCodecList> codecsList, const char* mime) {
    size_t start = 0;
    for (;;) {
        const ssize_t index = codecsList->findCodecByType(mime, true /* encoder */, start);
        if (index < 0) return false;
        start = static_cast<size_t>(index) + 1;

        const sp<MediaCodecInfo> info = codecsList->getCodecInfo(static_cast<size_t>(index));
        if (info == nullptr) {
            ALOGE("%s: Failed to get codec info for %s", __FUNCTION__, mime);
            return false;
        }
        const Candidate outcome = considerHevcCodec(info, mime);
        if (outcome != Candidate::kPassedOver) return outcome == Candidate::kAdopted;
    }
}

// A codec that does not suit is passed over; one that cannot be read ends the search, because a list in
// that state is not trusted any further. The messages carry the name of the search, not of this step.
HeicEncoderInfoManager::Candidate HeicEncoderInfoManager::considerHevcCodec(const sp<MediaCodecInfo>& info,
                                                                            const char* mime) {
    constexpr char kSearch[] = "getHevcCodecDetails";
    if ((info->getAttributes() & MediaCodecInfo::kFlagIsHardwareAccelerated) == 0) return Candidate::kPassedOver;

    const sp<MediaCodecInfo::Capabilities> caps = info->getCapabilitiesFor(mime);
    if (caps == nullptr) {
        ALOGE("%s: [%s] Failed to get capabilities", kSearch, info->getCodecName());
        return Candidate::kEndsSearch;
    }
    const sp<AMessage> details = caps->getDetails();
    if (details == nullptr) {
        ALOGE("%s: [%s] Failed to get details", kSearch, info->getCodecName());
        return Candidate::kEndsSearch;
    }

    AString bitrateModes;
    if (!details->findString("feature-bitrate-modes", &bitrateModes)) {
        ALOGE("%s: [%s] Failed to query bitrate modes", kSearch, info->getCodecName());
        return Candidate::kPassedOver;
    }
    if (!std::regex_search(bitrateModes.c_str(), std::regex(kConstantQualityPattern))) return Candidate::kPassedOver;

    IntPair minSize{0, 0};
    IntPair maxSize{0, 0};
    FrameRateMaps frameRates;
    const status_t res = getCodecSizeRange(MEDIA_MIMETYPE_VIDEO_HEVC, details, &minSize, &maxSize, &frameRates);
    if (res != OK) {
        ALOGE("%s: [%s] Failed to get size range: %s (%d)", kSearch, info->getCodecName(), strerror(-res), res);
        return Candidate::kEndsSearch;
    }
    if (!takesOneTile(minSize, maxSize)) return Candidate::kPassedOver;

    mHevcName = info->getCodecName();
    mHevcMinSize = minSize;
    mHevcMaxSize = maxSize;
    mHevcFrameRates = std::move(frameRates);
    return Candidate::kAdopted;
}

status_t HeicEncoderInfoManager::getCodecSizeRange(const char* codecName, sp<AMessage> details, IntPair* minSize,
                                                   IntPair* maxSize, FrameRateMaps* frameRates) {
    if (codecName == nullptr || minSize == nullptr || maxSize == nullptr || details == nullptr ||
        frameRates == nullptr) {
        return BAD_VALUE;
    }
    AString sizeRange;
    if (!details->findString("size-range", &sizeRange)) {
        ALOGE("%s: Failed to query size range for codec %s", __FUNCTION__, codecName);
        return BAD_VALUE;
    }
    // A range that does not parse is no error: the caller's sizes stay as they were, and those decide.
    if (parseSizeRange(sizeRange.c_str(), minSize, maxSize) &&
        (minSize->first > maxSize->first || minSize->second > maxSize->second)) {
        ALOGE("%s: Invalid %s code size range: %s", __FUNCTION__, codecName, sizeRange.c_str());
        return BAD_VALUE;
    }
    return getFrameRateMaps(details, frameRates);
}

status_t HeicEncoderInfoManager::getFrameRateMaps(sp<AMessage> details, FrameRateMaps* maps) {
    if (maps == nullptr || details == nullptr) {
        ALOGE("%s: Invalid input: details: %p, maps: %p", __FUNCTION__, details.get(), maps);
        return BAD_VALUE;
    }
    for (size_t i = 0; i < details->countEntries(); ++i) {
        AMessage::Type type;
        const char* name = details->getEntryNameAt(i, &type);
        IntPair size;
        if (type != AMessage::kTypeString || !matchIntPair(name, kFrameRateNamePattern, &size)) continue;

        AString value;
        if (!details->getEntryAt(i).find(&value)) continue;
        IntPair rates;
        if (!matchIntPair(value.c_str(), kFrameRatePattern, &rates)) return BAD_VALUE;
        maps->emplace(size, rates);  // the first entry for a size wins
    }
    return OK;
}

}  // namespace camera3
}  // namespace android
