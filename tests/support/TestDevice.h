#pragma once

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
std::string xml(const Codec& codec);

/** A device that the process runs on from now on. To be made before anything asks for codecs or properties. */
class TestDevice {
  public:
    /** `codecs`: the elements of the encoder list; `properties`: the lines of build.prop. */
    explicit TestDevice(const std::string& codecs, const std::string& properties = "");

  private:
    TemporaryFolder mFolder;
};

/** System properties for this process, as "key=value,key=value". */
void setProperties(const std::string& properties);

}  // namespace quill::test
