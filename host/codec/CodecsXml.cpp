#define LOG_TAG "QuillPlatform"

#include "CodecsXml.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include <log/log.h>
#include <media/MediaCodecInfo.h>
#include <tinyxml2.h>
#include <utils/Errors.h>

#include "Device.h"

namespace quill::host {

namespace {

using android::MediaCodecInfo;
using tinyxml2::XMLElement;

constexpr char kFileName[] = "media_codecs.xml";

struct AttributeRow {
    const char* name;
    int32_t flag;
};

constexpr AttributeRow kAttributes[] = {
        {"vendor", MediaCodecInfo::kFlagIsVendor},
        {"software-codec", MediaCodecInfo::kFlagIsSoftwareOnly},
        {"hardware-accelerated", MediaCodecInfo::kFlagIsHardwareAccelerated},
};

/** The suffix that an attribute of a <Limit> element adds to the name of the detail. */
struct LimitRow {
    const char* attribute;
    const char* suffix;
};

constexpr LimitRow kLimits[] = {
        {"value", ""}, {"range", "-range"}, {"ranges", "-ranges"}, {"default", "-default"}, {"scale", "-scale"},
};

void readLimit(const XMLElement& element, const char* name, CodecType* type) {
    const char* const min = element.Attribute("min");
    const char* const max = element.Attribute("max");
    if (min != nullptr && max != nullptr) {
        type->details.push_back({std::string(name) + "-range", std::string(min) + "-" + max});
    }
    for (const LimitRow& row : kLimits) {
        const char* const value = element.Attribute(row.attribute);
        if (value != nullptr) type->details.push_back({std::string(name) + row.suffix, value});
    }
}

void readFeature(const XMLElement& element, const char* name, CodecType* type) {
    const char* const value = element.Attribute("value");
    const bool required = element.BoolAttribute("required");
    CodecDetail detail{std::string("feature-") + name, value != nullptr ? value : required ? "1" : "0"};
    detail.isNumber = value == nullptr;
    type->details.push_back(detail);
}

void readDetails(const XMLElement& parent, CodecType* type) {
    for (const XMLElement* child = parent.FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
        const char* const name = child->Attribute("name");
        if (name == nullptr) continue;
        if (strcmp(child->Name(), "Limit") == 0) readLimit(*child, name, type);
        if (strcmp(child->Name(), "Feature") == 0) readFeature(*child, name, type);
    }
}

int32_t readAttributes(const XMLElement& codec) {
    int32_t flags = 0;
    const char* const kTag = "Attribute";
    for (const XMLElement* child = codec.FirstChildElement(kTag); child != nullptr;
         child = child->NextSiblingElement(kTag)) {
        for (const AttributeRow& row : kAttributes) {
            if (child->Attribute("name", row.name) != nullptr) flags |= row.flag;
        }
    }
    return flags;
}

/** The type is an attribute of the codec, or there are several as <Type> children. */
std::vector<CodecType> readTypes(const XMLElement& codec) {
    std::vector<CodecType> types;
    if (const char* const mime = codec.Attribute("type")) {
        types.push_back({mime, {}});
        readDetails(codec, &types.back());
    }
    const char* const kTag = "Type";
    for (const XMLElement* child = codec.FirstChildElement(kTag); child != nullptr;
         child = child->NextSiblingElement(kTag)) {
        const char* const mime = child->Attribute("name");
        if (mime == nullptr) continue;
        types.push_back({mime, {}});
        readDetails(*child, &types.back());
    }
    return types;
}

bool readCodecs(const XMLElement& list, int32_t commonFlags, DeviceCodecs* device) {
    const char* const kTag = "MediaCodec";
    for (const XMLElement* codec = list.FirstChildElement(kTag); codec != nullptr;
         codec = codec->NextSiblingElement(kTag)) {
        const char* const name = codec->Attribute("name");
        std::vector<CodecType> types = readTypes(*codec);
        if (name == nullptr || types.empty()) {
            ALOGE("%s: line %d: a codec needs a name and a type", kFileName, codec->GetLineNum());
            return false;
        }
        device->codecs.push_back({name, commonFlags | readAttributes(*codec), std::move(types)});
    }
    return true;
}

bool readDocument(const tinyxml2::XMLDocument& document, DeviceCodecs* device) {
    const XMLElement* const root = document.FirstChildElement("MediaCodecs");
    if (root == nullptr) {
        ALOGE("%s: the root element must be MediaCodecs", kFileName);
        return false;
    }
    for (const XMLElement* child = root->FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
        const std::string tag = child->Name();
        if (tag == "Encoders" && !readCodecs(*child, MediaCodecInfo::kFlagIsEncoder, device)) return false;
        if (tag == "Decoders" && !readCodecs(*child, 0, device)) return false;
    }
    return true;
}

bool handles(const CodecEntry& codec, const char* mime) {
    return std::any_of(codec.types.begin(), codec.types.end(),
                       [mime](const CodecType& type) { return strcasecmp(type.mime.c_str(), mime) == 0; });
}

}  // namespace

std::optional<DeviceCodecs> readCodecsXml(const std::string& path) {
    if (access(path.c_str(), F_OK) != 0) return std::nullopt;
    tinyxml2::XMLDocument document;
    if (document.LoadFile(path.c_str()) != tinyxml2::XML_SUCCESS) {
        ALOGE("%s: %s", path.c_str(), document.ErrorStr());
        return DeviceCodecs();
    }
    DeviceCodecs device;
    return readDocument(document, &device) ? device : DeviceCodecs();
}

const DeviceCodecs* deviceCodecs() {
    static const std::optional<DeviceCodecs> device = readCodecsXml(deviceFolder() + "/" + kFileName);
    return device ? &*device : nullptr;
}

ssize_t findCodecEntry(const DeviceCodecs& device, const char* mime, bool encoder, size_t start) {
    for (size_t i = start; i < device.codecs.size(); ++i) {
        const CodecEntry& codec = device.codecs[i];
        const bool isEncoder = (codec.attributes & MediaCodecInfo::kFlagIsEncoder) != 0;
        if (isEncoder == encoder && handles(codec, mime)) return static_cast<ssize_t>(i);
    }
    return android::NAME_NOT_FOUND;
}

}  // namespace quill::host
