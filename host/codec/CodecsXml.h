#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quill::host {

/** One limit or feature of a codec, under the name that its details carry it: "size-range", "64x64-8192x8192". */
struct CodecDetail {
    std::string name;
    std::string value;
    bool isNumber = false;  ///< a feature without a value: 1 when required, else 0
};

/** What a codec says about one media type. */
struct CodecType {
    std::string mime;
    std::vector<CodecDetail> details;
};

struct CodecEntry {
    std::string name;
    int32_t attributes = 0;  ///< MediaCodecInfo::Attributes
    std::vector<CodecType> types;
};

struct DeviceCodecs {
    std::vector<CodecEntry> codecs;  ///< in the file's order
    std::vector<std::pair<std::string, std::string>> settings;
};

/**
 * Reads the platform's media_codecs.xml format. Nothing when there is no such file; no codecs at all, and
 * an error in the log, when it is malformed.
 */
std::optional<DeviceCodecs> readCodecsXml(const std::string& path);

/** The codecs of this process's device, read once; null when it has no codec list. */
const DeviceCodecs* deviceCodecs();

/** Index of the first codec at or after `start` that handles `mime`; NAME_NOT_FOUND when there is none. */
ssize_t findCodecEntry(const DeviceCodecs& device, const char* mime, bool encoder, size_t start);

}  // namespace quill::host
