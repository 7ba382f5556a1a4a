#include "support/TestDevice.h"

#include <stdlib.h>

namespace quill::test {

std::string xml(const Codec& codec) {
    std::string text = "<MediaCodec name=\"" + codec.name + "\" type=\"" + codec.type + "\">";
    if (codec.hardware) text += "<Attribute name=\"hardware-accelerated\"/>";
    if (!codec.sizes.empty()) text += "<Limit name=\"size\" range=\"" + codec.sizes + "\"/>";
    if (!codec.modes.empty()) text += "<Feature name=\"bitrate-modes\" value=\"" + codec.modes + "\"/>";
    return text + codec.more + "</MediaCodec>\n";
}

TestDevice::TestDevice(const std::string& codecs, const std::string& properties) {
    mFolder.write("build.prop", properties);
    mFolder.write("media_codecs.xml", "<MediaCodecs><Encoders>\n" + codecs + "</Encoders></MediaCodecs>\n");
    setenv("QUILL_DEVICE", mFolder.path().c_str(), 1);
}

void setProperties(const std::string& properties) { setenv("QUILL_PROPERTIES", properties.c_str(), 1); }

}  // namespace quill::test
