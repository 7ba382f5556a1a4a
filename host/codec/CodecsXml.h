#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quill::host {

/** A limit or feature of a codec, as its details name it: "size-range", "64x64-8192x8192". */
struct CodecDetail {
    std::string name;
    std::string value;
    bool isNumber = false;  ///< a feature without a value: 1 if required, else 0
};

/** The details of a codec for one media type. */
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
};

/**
 * Reads the platform's media_codecs.xml format. Nothing if there is no such file; no codecs, with an error in the log,
 * if it is malformed.
 */
std::optional<DeviceCodecs> readCodecsXml(const std::string& path);

/** The codecs of this process's device, read once; null if it has no codec list. */
const DeviceCodecs* deviceCodecs();

/** Index of the first codec at or after `start` that supports `mime`; NAME_NOT_FOUND if there is none. */
ssize_t findCodecEntry(const DeviceCodecs& device, const char* mime, bool encoder, size_t start);

}  // namespace quill::host
