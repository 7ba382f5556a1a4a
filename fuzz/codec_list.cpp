// A device's codec list of any content gives an encoder or none. The input is text: the frame's size in two bytes each,
// then codecs, a line `HEVC` or `HEIC` before each one's details, `name=value` a line.
#include <media/stagefright/MediaCodecList.h>

#include "ByteSource.h"
#include "CodecsXml.h"
#include "HeicEncoderInfoManager.h"

namespace {

using namespace android;
using namespace quill::fuzz;
using quill::host::CodecEntry;

std::vector<CodecEntry> gCodecs;

/** The platform's list of the input's codecs. */
class GeneratedList : public BnMediaCodecList {
  public:
    sp<MediaCodecInfo> getCodecInfo(size_t index) const override { return new MediaCodecInfo(gCodecs.at(index)); }
    ssize_t findCodecByType(const char* type, bool /* encoder */, size_t start) const override {
        for (size_t i = start; i < gCodecs.size(); ++i) {
            if (gCodecs[i].types[0].mime == type) return static_cast<ssize_t>(i);
        }
        return NAME_NOT_FOUND;
    }
};

void addLine(const std::string& line) {
    const size_t equals = line.find('=');
    if (line == "HEVC" || line == "HEIC") {
        gCodecs.push_back({"c2.test", MediaCodecInfo::kFlagIsHardwareAccelerated, {{}}});
        gCodecs.back().types[0].mime = line == "HEVC" ? "video/hevc" : "image/vnd.android.heic";
    } else if (!gCodecs.empty() && equals != std::string::npos) {
        gCodecs.back().types[0].details.push_back({line.substr(0, equals), line.substr(equals + 1)});
    }
}

}  // namespace

// Found ahead of the stand-in's, which reads a file once a process.
sp<IMediaCodecList> MediaCodecList::getInstance() { return new GeneratedList; }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    const int32_t width = script.number(), height = script.number();
    std::string text = script.bytes(size);
    gCodecs.clear();
    for (size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1)) addLine(text.substr(0, end));
    const camera3::HeicEncoderInfoManager manager;
    bool useGrid = false;
    AString name;
    const bool supported = manager.isSizeSupported(width, height, &useGrid, &name);
    require(supported == !name.empty(), "a component for a size that is supported");
    require(!supported || useGrid || (width <= 512 && height <= 512), "whole pictures no larger than a tile");
    for (const auto* rates : {&manager.mHevcFrameRates, &manager.mHeicFrameRates}) {
        require((manager.findClosestSize(*rates, width, height) == rates->end()) == rates->empty(), "a closest size");
    }
    return 0;
}
