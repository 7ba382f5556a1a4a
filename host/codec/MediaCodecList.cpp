#include <media/stagefright/MediaCodecList.h>

#include <string.h>

#include "CodecsXml.h"
#include "Faults.h"

namespace android {

using quill::host::DeviceCodecs;
using quill::host::deviceCodecs;
using quill::host::Faults;

sp<IMediaCodecList> MediaCodecList::getInstance() {
    if (Faults::instance().statusAt("MediaCodecList::getInstance")) return nullptr;
    static const sp<IMediaCodecList> list = read();
    return list;
}

sp<IMediaCodecList> MediaCodecList::read() {
    const DeviceCodecs* const device = deviceCodecs();
    if (device == nullptr) return nullptr;
    std::vector<sp<MediaCodecInfo>> codecs;
    for (const quill::host::CodecEntry& entry : device->codecs) codecs.push_back(new MediaCodecInfo(entry));
    return new MediaCodecList(std::move(codecs));
}

MediaCodecList::MediaCodecList(std::vector<sp<MediaCodecInfo>> codecs)
        : mCodecs(std::move(codecs)), mGlobalSettings(new AMessage) {
    for (const auto& [name, value] : deviceCodecs()->settings) {
        mGlobalSettings->setString(name.c_str(), value.c_str());
    }
}

size_t MediaCodecList::countCodecs() const { return mCodecs.size(); }

sp<MediaCodecInfo> MediaCodecList::getCodecInfo(size_t index) const {
    if (Faults::instance().statusAt("MediaCodecList::getCodecInfo")) return nullptr;
    return index < mCodecs.size() ? mCodecs[index] : nullptr;
}

const sp<AMessage> MediaCodecList::getGlobalSettings() const { return mGlobalSettings; }

ssize_t MediaCodecList::findCodecByType(const char* type, bool encoder, size_t startIndex) const {
    if (const auto fault = Faults::instance().statusAt("MediaCodecList::findCodecByType")) return *fault;
    return quill::host::findCodecEntry(*deviceCodecs(), type, encoder, startIndex);
}

ssize_t MediaCodecList::findCodecByName(const char* name) const {
    if (const auto fault = Faults::instance().statusAt("MediaCodecList::findCodecByName")) return *fault;
    for (size_t i = 0; i < mCodecs.size(); ++i) {
        if (strcmp(mCodecs[i]->getCodecName(), name) == 0) return static_cast<ssize_t>(i);
    }
    return NAME_NOT_FOUND;
}

void MediaCodecList::findMatchingCodecs(const char* mime, bool createEncoder, uint32_t flags,
                                        Vector<AString>* matchingCodecs) {
    matchingCodecs->clear();
    const DeviceCodecs* const device = deviceCodecs();
    if (device == nullptr) return;
    Vector<AString> others;
    ssize_t index = -1;
    while ((index = quill::host::findCodecEntry(*device, mime, createEncoder, static_cast<size_t>(index + 1))) >= 0) {
        const AString name(device->codecs[static_cast<size_t>(index)].name.c_str());
        const bool software = isSoftwareCodec(name);
        if (software && (flags & kHardwareCodecsOnly) != 0) continue;
        const bool first = software || (flags & kPreferSoftwareCodecs) == 0;
        (first ? *matchingCodecs : others).push_back(name);
    }
    matchingCodecs->appendVector(others);
}

bool MediaCodecList::isSoftwareCodec(const AString& componentName) {
    const DeviceCodecs* const device = deviceCodecs();
    if (device != nullptr) {
        for (const quill::host::CodecEntry& codec : device->codecs) {
            if (codec.name == componentName.c_str()) {
                return (codec.attributes & MediaCodecInfo::kFlagIsSoftwareOnly) != 0;
            }
        }
    }
    return componentName.startsWithIgnoreCase("c2.android.");
}

}  // namespace android
