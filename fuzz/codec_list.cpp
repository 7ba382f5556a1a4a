// A device's codec list of any content, and what the manager makes of it, against a plain reading of the same strings.
#include <media/stagefright/MediaCodecList.h>

#include <optional>

#include "ByteSource.h"
#include "CodecsXml.h"
#include "HeicEncoderInfoManager.h"

namespace {

using namespace android;
using namespace quill::fuzz;
using android::camera3::FrameRateMaps;
using android::camera3::HeicEncoderInfoManager;
using android::camera3::IntPair;
using quill::host::CodecDetail;
using quill::host::CodecEntry;
using quill::host::CodecType;

constexpr char kHevc[] = "video/hevc", kHeic[] = "image/vnd.android.heic";
constexpr const char* kTypes[] = {kHevc, kHevc, kHeic, "video/avc"};
constexpr const char* kNames[] = {"size-range", "size-range", "feature-bitrate-modes", "feature-bitrate-modes",
                                  "measured-frame-rate-"};
constexpr const char* kNumbers[] = {"0",   "64",         "512",        "513", "4096",
                                    "007", "2147483647", "2147483648", "",    "99999999999999999999"};
constexpr const char* kSeparators[] = {"x", "-", "*", ",", "-range", " "};
constexpr const char* kModes[] = {"CQ", "VBR", "CBR", ",", "CQX"};

/** Around the sizes that something changes at, or any. */
int32_t anySide(ByteSource& script) {
    const int32_t sides[] = {1, 64, 511, 512, 513, 4096, script.number(INT32_MIN, INT32_MAX)};
    return script.oneOf(sides);
}

/** Text that is nearly what is expected, or any. */
std::string anyText(ByteSource& script) {
    std::string text;
    for (int piece = script.number(0, 9); piece > 0; --piece) {
        const int kind = script.number(0, 3);
        text += kind == 0   ? script.oneOf(kNumbers)
                : kind == 1 ? script.oneOf(kSeparators)
                : kind == 2 ? script.oneOf(kModes)
                            : script.text(script.number<size_t>(0, 12)).c_str();
    }
    return text;
}

std::string sizes(ByteSource& script) {
    const std::string pieces[] = {script.oneOf(kNumbers), script.oneOf(kSeparators), script.oneOf(kNumbers)};
    return pieces[0] + pieces[1] + pieces[2];
}

CodecDetail anyDetail(ByteSource& script) {
    CodecDetail detail;
    detail.name = script.oneOf(kNames);
    if (detail.name.back() == '-') detail.name += sizes(script) + "-range";
    const int kind = script.number(0, 3);
    detail.value = kind == 0   ? "CBR,CQ"
                   : kind == 1 ? sizes(script) + "-" + sizes(script)
                   : kind == 2 ? sizes(script)
                               : anyText(script);
    detail.isNumber = script.number(0, 15) == 15;
    return detail;
}

std::vector<CodecEntry> anyCodecs(ByteSource& script) {
    std::vector<CodecEntry> codecs;
    for (int count = script.number(0, 4); count > 0; --count) {
        CodecEntry& codec = codecs.emplace_back();
        codec.name = "c2.test." + std::to_string(count);
        codec.attributes = MediaCodecInfo::kFlagIsEncoder | (script.number(0, 3) == 3 ? 0 : 8);
        CodecType& type = codec.types.emplace_back();
        type.mime = script.oneOf(kTypes);
        for (int details = script.number(0, 6); details > 0; --details) type.details.push_back(anyDetail(script));
    }
    return codecs;
}

/** The platform's list of the input's codecs. */
class GeneratedList : public BnMediaCodecList {
  public:
    explicit GeneratedList(const std::vector<CodecEntry>& codecs) : mCodecs(codecs) {}

    sp<MediaCodecInfo> getCodecInfo(size_t index) const override { return new MediaCodecInfo(mCodecs.at(index)); }
    ssize_t findCodecByType(const char* type, bool encoder, size_t start) const override {
        require(encoder, "encoders alone are asked for");
        for (size_t i = start; i < mCodecs.size(); ++i) {
            if (mCodecs[i].types[0].mime == type) return static_cast<ssize_t>(i);
        }
        return NAME_NOT_FOUND;
    }

  private:
    const std::vector<CodecEntry>& mCodecs;
};
const std::vector<CodecEntry>* gCodecs = nullptr;

// ---- a plain reading -----------------------------------------------------------------------------------------------

/** Reads a number that fits an int; nothing when there is none. */
std::optional<int32_t> readNumber(const char*& text) {
    const char* const begin = text;
    int64_t value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) value = std::min<int64_t>(10 * value + *text - '0', int64_t{1} << 40);
    if (text == begin || value > INT32_MAX) return std::nullopt;
    return static_cast<int32_t>(value);
}

/** Numbers with one of `separators` each in between; nothing unless that is the whole text. */
std::vector<int32_t> readNumbers(const char* text, std::initializer_list<const char*> separators) {
    std::vector<int32_t> numbers;
    auto separator = separators.begin();
    for (;;) {
        const auto number = readNumber(text);
        if (!number) return {};
        numbers.push_back(*number);
        if (separator == separators.end()) return *text == 0 ? numbers : std::vector<int32_t>();
        if (*text == 0 || strchr(*separator++, *text++) == nullptr) return {};
    }
}

const std::string* findDetail(const CodecEntry& codec, const std::string& name) {
    const std::string* found = nullptr;
    for (const CodecDetail& detail : codec.types[0].details) {
        if (detail.name == name) found = detail.isNumber ? nullptr : &detail.value;  // the last one set counts
    }
    return found;
}

enum class Reading { kSuits, kDoesNot, kBroken };

bool hasBrokenRates(const CodecEntry& codec) {
    constexpr size_t kBefore = sizeof("measured-frame-rate-") - 1, kAfter = sizeof("-range") - 1;
    for (const CodecDetail& detail : codec.types[0].details) {
        const std::string& name = detail.name;
        const std::string* const value = findDetail(codec, name);
        if (value == nullptr || name.compare(0, kBefore, "measured-frame-rate-") != 0) continue;
        const std::string size = name.substr(kBefore, name.size() - kBefore - kAfter);
        if (!readNumbers(size.c_str(), {"*x"}).empty() && readNumbers(value->c_str(), {"-"}).empty()) return true;
    }
    return false;
}

Reading readSizes(const CodecEntry& codec, IntPair& least, IntPair& most) {
    const std::string* const range = findDetail(codec, "size-range");
    if (range == nullptr) return Reading::kBroken;
    const std::vector<int32_t> numbers = readNumbers(range->c_str(), {"*x", "-", "*x"});
    if (!numbers.empty()) {
        least = {numbers[0], numbers[1]};
        most = {numbers[2], numbers[3]};
    }
    if (!numbers.empty() && (numbers[0] > numbers[2] || numbers[1] > numbers[3])) return Reading::kBroken;
    return hasBrokenRates(codec) ? Reading::kBroken : Reading::kSuits;
}

Reading readHevc(const CodecEntry& codec, IntPair& least, IntPair& most) {
    const std::string* const modes = findDetail(codec, "feature-bitrate-modes");
    if ((codec.attributes & 8) == 0 || modes == nullptr) return Reading::kDoesNot;
    if (("," + *modes + ",").find(",CQ,") == std::string::npos) return Reading::kDoesNot;
    least = most = {0, 0};
    const Reading reading = readSizes(codec, least, most);
    if (reading != Reading::kSuits) return reading;
    const bool takesTile = least.first <= 512 && least.second <= 512 && most.first >= 512 && most.second >= 512;
    return takesTile ? Reading::kSuits : Reading::kDoesNot;
}

/** What the manager is to know. */
struct Expected {
    bool initialized = true;
    const CodecEntry* hevc = nullptr;
    const CodecEntry* heic = nullptr;
    IntPair hevcLeast, hevcMost, heicLeast{0, 0}, heicMost{INT32_MAX, INT32_MAX};

    explicit Expected(const std::vector<CodecEntry>& codecs) {
        bool searching = true;
        for (const CodecEntry& codec : codecs) {
            if (codec.types[0].mime == kHeic && heic == nullptr) heic = &codec;
            if (codec.types[0].mime != kHevc || !searching) continue;
            const Reading reading = readHevc(codec, hevcLeast, hevcMost);
            searching = reading == Reading::kDoesNot;
            if (reading == Reading::kSuits) hevc = &codec;
        }
        if (heic == nullptr) return;
        initialized = hevc != nullptr && readSizes(*heic, heicLeast, heicMost) == Reading::kSuits;
    }
};

bool isInside(const IntPair& size, const IntPair& least, const IntPair& most) {
    return size.first >= least.first && size.second >= least.second && size.first <= most.first &&
           size.second <= most.second;
}

void checkAnswer(const HeicEncoderInfoManager& manager, const Expected& expected, const IntPair& size) {
    bool useGrid = false;
    AString name;
    const bool supported = manager.isSizeSupported(size.first, size.second, &useGrid, &name);
    require(supported == (expected.initialized && expected.hevc != nullptr), "sizes that are supported");
    if (!supported) return;
    const bool whole = !(expected.heic != nullptr && isInside(size, expected.heicLeast, expected.heicMost)) &&
                       isInside(size, expected.hevcLeast, expected.hevcMost) && size.first <= 512 && size.second <= 512;
    require(useGrid == !whole, "sizes that are tiled");
    require(name == expected.hevc->name.c_str(), "the component");
}

void checkClosest(const HeicEncoderInfoManager& manager, const FrameRateMaps& rates, const IntPair& size) {
    const auto closest = manager.findClosestSize(rates, size.first, size.second);
    require((closest == rates.end()) == rates.empty(), "a closest size where there are any");
}

}  // namespace

// Found ahead of the stand-in's, which reads a file once a process.
sp<IMediaCodecList> MediaCodecList::getInstance() { return new GeneratedList(*gCodecs); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    const int32_t width = anySide(script);
    const IntPair asked(width, anySide(script));
    const std::vector<CodecEntry> codecs = anyCodecs(script);
    gCodecs = &codecs;
    const HeicEncoderInfoManager manager;
    checkAnswer(manager, Expected(codecs), asked);
    checkClosest(manager, manager.mHevcFrameRates, asked);
    checkClosest(manager, manager.mHeicFrameRates, asked);
    return 0;
}
