#include <media/stagefright/MediaCodecList.h>

#include <utility>

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

MediaCodecList::MediaCodecList(std::vector<sp<MediaCodecInfo>> codecs) : mCodecs(std::move(codecs)) {}

sp<MediaCodecInfo> MediaCodecList::getCodecInfo(size_t index) const {
    if (Faults::instance().statusAt("MediaCodecList::getCodecInfo")) return nullptr;
    return index < mCodecs.size() ? mCodecs[index] : nullptr;
}

ssize_t MediaCodecList::findCodecByType(const char* type, bool encoder, size_t startIndex) const {
    if (const auto fault = Faults::instance().statusAt("MediaCodecList::findCodecByType")) return *fault;
    return quill::host::findCodecEntry(*deviceCodecs(), type, encoder, startIndex);
}

}  // namespace android
