#include "ExifBlock.h"

#include <string.h>

namespace android {

namespace {

constexpr uint32_t kLastHeaderPosition = 18;  // camera framings are shorter than this

// Offsets from the TIFF header. IFD0 is taken to follow the 8-byte header directly, on purpose: cameras put it there,
// and an offset that is not read cannot lead outside the block.
constexpr uint32_t kIfd0 = 8;
constexpr uint32_t kEntrySize = 12;

// Layout of what is appended, as offsets from the end of the old block. IFD1 starts one spare byte past it.
constexpr uint32_t kIfd1 = 1;
constexpr uint32_t kXResolution = 79;
constexpr uint32_t kYResolution = 87;
constexpr uint32_t kThumbnail = kThumbnailDirectorySize;
constexpr uint32_t kDotsPerInch = 72;

enum Type : uint16_t { kShort = 3, kLong = 4, kRational = 5 };

struct Entry {
    uint16_t tag;
    Type type;
    uint32_t value;  ///< or where it lies
};

uint32_t readU16(const uint8_t* data) { return data[0] | static_cast<uint32_t>(data[1]) << 8; }

uint32_t readU32(const uint8_t* data) { return readU16(data) | readU16(data + 2) << 16; }

uint8_t* putU16(uint8_t* out, uint32_t value) {
    out[0] = static_cast<uint8_t>(value);
    out[1] = static_cast<uint8_t>(value >> 8);
    return out + 2;
}

uint8_t* putU32(uint8_t* out, uint32_t value) { return putU16(putU16(out, value), value >> 16); }

bool holds(ExifBytes block, uint64_t offset, uint64_t count) {
    return offset <= block.size && count <= block.size - offset;
}

/** Lowest position of an "II" that may be the header's; past the last one when there is none. */
uint32_t findByteOrderMark(ExifBytes block) {
    uint32_t p = 0;
    while (p <= kLastHeaderPosition && !(holds(block, p, 2) && block.data[p] == 'I' && block.data[p + 1] == 'I')) ++p;
    return p;
}

/** Where IFD0's link to the next directory lies; 0 if the block is too short for it. */
uint64_t linkOffset(ExifBytes block, uint32_t initPosition) {
    const uint64_t ifd0 = uint64_t{initPosition} + kIfd0;
    if (!holds(block, ifd0, 2)) return 0;
    const uint64_t link = ifd0 + 2 + uint64_t{kEntrySize} * readU16(block.data + ifd0);
    return holds(block, link, 4) ? link : 0;
}

void putEntry(uint8_t*& out, const Entry& entry) {
    out = putU16(out, entry.tag);
    out = putU16(out, entry.type);
    out = putU32(out, 1);            // count
    out = putU32(out, entry.value);  // a SHORT lies in the first two bytes, low byte first, so this is right for all
}

}  // namespace

ExifAnalysis analyseExifBlock(ExifBytes block, uint32_t initPosition) {
    const uint32_t found = findByteOrderMark(block);
    if (found <= kLastHeaderPosition) initPosition = found;
    // A header at the very start counts as not found, on purpose: the camera's blocks all have a framing.
    const uint64_t link = initPosition == 0 ? 0 : linkOffset(block, initPosition);
    if (link == 0) return {ExifAnalysis::kNoTiffHeader, initPosition};
    const bool linked = readU32(block.data + link) != 0;
    return {linked ? ExifAnalysis::kHasIfd1 : ExifAnalysis::kNoIfd1, initPosition};
}

bool appendThumbnailDirectory(ExifBytes block, uint32_t initPosition, ExifBytes thumbnail, uint8_t* out) {
    const uint32_t base = static_cast<uint32_t>(block.size) - initPosition;  // end of the old block, from the header
    const Entry directory[] = {
            {0x0103, kShort, 6},                                     // Compression: JPEG
            {0x011A, kRational, base + kXResolution},                // XResolution
            {0x011B, kRational, base + kYResolution},                // YResolution
            {0x0128, kShort, 2},                                     // ResolutionUnit: inches
            {0x0201, kLong, base + kThumbnail},                      // JPEGInterchangeFormat
            {0x0202, kLong, static_cast<uint32_t>(thumbnail.size)},  // JPEGInterchangeFormatLength
    };
    memcpy(out, block.data, block.size);
    // Of the copy: the block is the caller's, who may change it at any time.
    const uint64_t link = linkOffset({out, block.size}, initPosition);
    if (link == 0) return false;
    putU32(out + link, base + kIfd1);

    uint8_t* next = out + block.size + kIfd1;
    next = putU16(next, sizeof(directory) / sizeof(directory[0]));
    for (const Entry& entry : directory) putEntry(next, entry);
    next = putU32(next, 0);  // no further directory
    for (int resolution = 0; resolution < 2; ++resolution) next = putU32(putU32(next, kDotsPerInch), 1);
    memcpy(next, thumbnail.data, thumbnail.size);
    return true;
}

}  // namespace android
