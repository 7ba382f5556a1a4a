#include "HevcConfig.h"

#include <algorithm>

namespace quill::host {

namespace {

constexpr uint8_t kRecordVersion = 1;
constexpr unsigned kLengthSizeMinusOne = 3;
constexpr uint8_t kArrayComplete = 0x80;
// Reserved bits of the record, all ones.
constexpr uint16_t kReserved4 = 0xF000;
constexpr uint8_t kReserved5 = 0xF8, kReserved6 = 0xFC;

size_t kindOf(NalType type) { return static_cast<size_t>(type) - static_cast<size_t>(NalType::kVps); }

Bytes copyOf(const Nal& nal) { return Bytes(nal.bytes.data, nal.bytes.data + nal.bytes.size); }

void putProfile(BoxWriter& writer, const HevcProfile& profile) {
    writer.put8(profile.spaceTierProfile);
    for (uint8_t byte : profile.compatibility) writer.put8(byte);
    for (uint8_t byte : profile.constraints) writer.put8(byte);
    writer.put8(profile.level);
}

void putParameterSets(BoxWriter& writer, size_t kind, const std::vector<Bytes>& sets) {
    writer.put8(kArrayComplete | (static_cast<size_t>(NalType::kVps) + kind));
    writer.put16(sets.size());
    for (const Bytes& set : sets) {
        writer.put16(set.size());
        writer.putBytes(set);
    }
}

}  // namespace

bool HevcConfig::contains(const Nal& nal) const {
    const auto& sets = parameterSets[kindOf(nal.type())];
    return std::find(sets.begin(), sets.end(), copyOf(nal)) != sets.end();
}

std::optional<HevcConfig> parseHevcConfig(ByteView codecData) {
    HevcConfig config;
    for (const Nal& nal : splitNals(codecData)) {
        if (nal.isParameterSet()) config.parameterSets[kindOf(nal.type())].push_back(copyOf(nal));
    }
    for (const auto& sets : config.parameterSets) {
        if (sets.empty()) return std::nullopt;
    }
    const auto sps = parseSps({config.parameterSets[kindOf(NalType::kSps)].front()});
    if (!sps) return std::nullopt;
    config.sps = *sps;
    return config;
}

void putHevcRecord(BoxWriter& writer, const HevcConfig& config) {
    const HevcSps& sps = config.sps;
    writer.put8(kRecordVersion);
    putProfile(writer, sps.profile);
    writer.put16(kReserved4);  // spatial segmentation unknown
    writer.put8(kReserved6);   // parallelism unknown
    writer.put8(kReserved6 | sps.chromaFormat);
    writer.put8(kReserved5 | (sps.lumaBits - 8));
    writer.put8(kReserved5 | (sps.chromaBits - 8));
    writer.put16(0);  // no average frame rate
    writer.put8(sps.temporalLayers << 3 | (sps.temporalIdNested ? 1 : 0) << 2 | kLengthSizeMinusOne);
    writer.put8(HevcConfig::kKinds);
    for (size_t kind = 0; kind < HevcConfig::kKinds; ++kind) {
        putParameterSets(writer, kind, config.parameterSets[kind]);
    }
}

std::optional<Bytes> toLengthPrefixed(ByteView sample, const HevcConfig& config) {
    BoxWriter writer;
    bool hasPicture = false;
    const std::vector<Nal> nals = splitNals(sample);
    writer.reserve(sample.size + nals.size());  // a length is one byte longer than the shortest start code
    for (const Nal& nal : nals) {
        if (nal.isParameterSet() && !config.contains(nal)) return std::nullopt;
        if (nal.isParameterSet()) continue;
        if (nal.isPicture() && !nal.startsDecoding()) return std::nullopt;
        hasPicture = hasPicture || nal.isPicture();
        writer.put32(nal.bytes.size);
        writer.putBytes(nal.bytes);
    }
    if (!hasPicture || !writer.ok()) return std::nullopt;
    return writer.take();
}

}  // namespace quill::host
