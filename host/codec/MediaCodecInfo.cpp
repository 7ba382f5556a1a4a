#include <media/MediaCodecInfo.h>

#include <ctype.h>

#include <algorithm>

#include "CodecsXml.h"
#include "Faults.h"

namespace android {

namespace {

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
        mCapabilities[lowerCase(type.mime)] = capabilities;
    }
}

bool MediaCodecInfo::isEncoder() const { return (mAttributes & kFlagIsEncoder) != 0; }

MediaCodecInfo::Attributes MediaCodecInfo::getAttributes() const { return static_cast<Attributes>(mAttributes); }

const char* MediaCodecInfo::getCodecName() const { return mName.c_str(); }

const sp<MediaCodecInfo::Capabilities> MediaCodecInfo::getCapabilitiesFor(const char* mediaType) const {
    if (quill::host::Faults::instance().statusAt("MediaCodecInfo::getCapabilitiesFor")) return nullptr;
    const auto found = mCapabilities.find(lowerCase(mediaType));
    return found != mCapabilities.end() ? found->second : nullptr;
}

const sp<AMessage> MediaCodecInfo::Capabilities::getDetails() const {
    if (quill::host::Faults::instance().statusAt("MediaCodecInfo::Capabilities::getDetails")) return nullptr;
    return mDetails;
}

}  // namespace android
