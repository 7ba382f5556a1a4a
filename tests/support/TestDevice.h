#pragma once

#include <stdlib.h>

#include <string>

#include "support/TemporaryFiles.h"

namespace quill::test {

/** One encoder of a device. Empty texts leave the item out. */
struct Codec {
    std::string name = "c2.test.hevc.encoder";
    std::string sizes = "64x64-4096x4096";
    std::string modes = "VBR,CBR,CQ";
    std::string type = "video/hevc";
    bool hardware = true;
    std::string more = "";  ///< further elements
};

/** The <MediaCodec> element of the platform's media_codecs.xml. */
inline std::string xml(const Codec& codec) {
    std::string text = "<MediaCodec name=\"" + codec.name + "\" type=\"" + codec.type + "\">";
    if (codec.hardware) text += "<Attribute name=\"hardware-accelerated\"/>";
    if (!codec.sizes.empty()) text += "<Limit name=\"size\" range=\"" + codec.sizes + "\"/>";
    if (!codec.modes.empty()) text += "<Feature name=\"bitrate-modes\" value=\"" + codec.modes + "\"/>";
    return text + codec.more + "</MediaCodec>\n";
}

/** A device that the process runs on from now on. To be made before anything asks for codecs or properties. */
class TestDevice {
  public:
    /** `codecs`: the elements of the encoder list; `properties`: the lines of build.prop. */
    explicit TestDevice(const std::string& codecs, const std::string& properties = "") {
        mFolder.write("build.prop", properties);
        mFolder.write("media_codecs.xml", "<MediaCodecs><Encoders>\n" + codecs + "</Encoders></MediaCodecs>\n");
        setenv("QUILL_DEVICE", mFolder.path().c_str(), 1);
    }

  private:
    TemporaryFolder mFolder;
};

/** System properties for this process, as "key=value,key=value". */
inline void setProperties(const std::string& properties) { setenv("QUILL_PROPERTIES", properties.c_str(), 1); }

}  // namespace quill::test
