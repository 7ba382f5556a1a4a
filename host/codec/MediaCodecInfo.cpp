#include <media/MediaCodecInfo.h>

#include <ctype.h>

#include <algorithm>

#include <media/stagefright/MediaCodecConstants.h>

#include "CodecConfig.h"
#include "CodecsXml.h"
#include "Faults.h"

namespace android {

namespace {

// The platform's numbers of the profiles that the encoder produces, at the highest level there is.
constexpr uint32_t kHevcLevelHighTier62 = 0x2000000;
constexpr MediaCodecInfo::ProfileLevel kHevcProfiles[] = {
        {1 /* Main */, kHevcLevelHighTier62},
        {2 /* Main 10 */, kHevcLevelHighTier62},
        {4 /* Main Still Picture */, kHevcLevelHighTier62},
};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(tolower(c)); });
    return text;
}

sp<AMessage> detailsOf(const quill::host::CodecType& type) {
    const sp<AMessage> details = new AMessage;
    for (const quill::host::CodecDetail& detail : type.details) {
        if (detail.isNumber) {
            details->setInt32(detail.name.c_str(), detail.value == "1");
        } else {
            details->setString(detail.name.c_str(), detail.value.c_str());
        }
    }
    return details;
}

}  // namespace

MediaCodecInfo::MediaCodecInfo(const quill::host::CodecEntry& entry)
        : mName(entry.name), mAttributes(entry.attributes) {
    for (const quill::host::CodecType& type : entry.types) {
        const sp<Capabilities> capabilities = new Capabilities;
        capabilities->mDetails = detailsOf(type);
        const std::string mime = lowerCase(type.mime);
        if (isEncoder() && mime == MIMETYPE_VIDEO_HEVC) {
            for (const ProfileLevel& profile : kHevcProfiles) capabilities->mProfileLevels.push_back(profile);
            for (int32_t format : quill::host::supportedColorFormats()) {
                capabilities->mColorFormats.push_back(static_cast<uint32_t>(format));
            }
        }
        mCapabilities[mime] = capabilities;
    }
}

bool MediaCodecInfo::isEncoder() const { return (mAttributes & kFlagIsEncoder) != 0; }

MediaCodecInfo::Attributes MediaCodecInfo::getAttributes() const { return static_cast<Attributes>(mAttributes); }

const char* MediaCodecInfo::getCodecName() const { return mName.c_str(); }

void MediaCodecInfo::getSupportedMediaTypes(Vector<AString>* mediaTypes) const {
    for (const auto& capability : mCapabilities) mediaTypes->push_back(AString(capability.first.c_str()));
}

const sp<MediaCodecInfo::Capabilities> MediaCodecInfo::getCapabilitiesFor(const char* mediaType) const {
    if (quill::host::Faults::instance().statusAt("MediaCodecInfo::getCapabilitiesFor")) return nullptr;
    const auto found = mCapabilities.find(lowerCase(mediaType));
    return found != mCapabilities.end() ? found->second : nullptr;
}

void MediaCodecInfo::Capabilities::getSupportedProfileLevels(Vector<ProfileLevel>* profileLevels) const {
    profileLevels->appendVector(mProfileLevels);
}

void MediaCodecInfo::Capabilities::getSupportedColorFormats(Vector<uint32_t>* colorFormats) const {
    colorFormats->appendVector(mColorFormats);
}

const sp<AMessage> MediaCodecInfo::Capabilities::getDetails() const {
    if (quill::host::Faults::instance().statusAt("MediaCodecInfo::Capabilities::getDetails")) return nullptr;
    return mDetails;
}

}  // namespace android
