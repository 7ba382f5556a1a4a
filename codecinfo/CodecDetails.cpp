#define LOG_TAG "HeicEncoderInfoManager"

#include <string.h>

#include <charconv>
#include <string>

#include <log/log.h>
#include <media/MediaCodecInfo.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "HeicEncoderInfoManager.h"
#include "TileLayout.h"

namespace android {
namespace camera3 {

namespace {

bool takesOneTile(const IntPair& minSize, const IntPair& maxSize) {
    return maxSize.first >= kTileSide && maxSize.second >= kTileSide && minSize.first <= kTileSide &&
           minSize.second <= kTileSide;
}

/** Reads a text piece by piece; once a piece does not fit, nothing does. */
class Scanner {
  public:
    explicit Scanner(const char* text) : mNext(text), mEnd(text + strlen(text)) {}

    Scanner& literal(const char* expected) {
        const size_t length = strlen(expected);
        mFits = mFits && static_cast<size_t>(mEnd - mNext) >= length && memcmp(mNext, expected, length) == 0;
        if (mFits) mNext += length;
        return *this;
    }
    /** Both are accepted: 64x64-4096x2304 and 64*64-4096*2304. */
    Scanner& separator() {
        mFits = mFits && mNext != mEnd && (*mNext == '*' || *mNext == 'x');
        if (mFits) ++mNext;
        return *this;
    }
    /** Decimal digits, in the range of an int. */
    Scanner& number(int32_t* value) {
        mFits = mFits && mNext != mEnd && *mNext >= '0' && *mNext <= '9';
        if (!mFits) return *this;
        const auto [next, error] = std::from_chars(mNext, mEnd, *value);
        mFits = error == std::errc{};
        mNext = next;
        return *this;
    }
    bool fitsToTheEnd() const { return mFits && mNext == mEnd; }

  private:
    const char* mNext;
    const char* mEnd;
    bool mFits = true;
};

/** False, and nothing stored, for a text that is no size range or has a number in it that no int holds. */
bool parseSizeRange(const char* text, IntPair* minSize, IntPair* maxSize) {
    IntPair smallest, largest;
    Scanner scanner(text);
    scanner.number(&smallest.first).separator().number(&smallest.second).literal("-");
    scanner.number(&largest.first).separator().number(&largest.second);
    if (!scanner.fitsToTheEnd()) return false;
    *minSize = smallest;
    *maxSize = largest;
    return true;
}

bool parseFrameRateName(const char* name, IntPair* size) {
    Scanner scanner(name);
    scanner.literal("measured-frame-rate-").number(&size->first).separator().number(&size->second).literal("-range");
    return scanner.fitsToTheEnd();
}

bool parseFrameRates(const char* text, IntPair* rates) {
    return Scanner(text).number(&rates->first).literal("-").number(&rates->second).fitsToTheEnd();
}

/** Whether CQ is one whole element of a comma-separated list. */
bool hasConstantQuality(const std::string& modes) { return ("," + modes + ",").find(",CQ,") != std::string::npos; }

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
    if (!hasConstantQuality(bitrateModes.c_str())) return Candidate::kPassedOver;

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
        if (type != AMessage::kTypeString || !parseFrameRateName(name, &size)) continue;

        AString value;
        if (!details->getEntryAt(i).find(&value)) continue;
        IntPair rates;
        if (!parseFrameRates(value.c_str(), &rates)) return BAD_VALUE;
        maps->emplace(size, rates);  // the first entry for a size wins
    }
    return OK;
}

}  // namespace camera3
}  // namespace android
