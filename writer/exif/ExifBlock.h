#pragma once

#include <stddef.h>
#include <stdint.h>

namespace android {

/** Bytes of an EXIF block (Exif 2.32): any framing, then a TIFF header, then its directories. Owned by someone else. */
struct ExifBytes {
    const uint8_t* data;
    size_t size;
};

/** What an EXIF block says about a thumbnail. */
struct ExifAnalysis {
    enum Outcome {
        kNoTiffHeader,  ///< no little-endian header where it is looked for, or a block too short for what it announces
        kHasIfd1,       ///< IFD0 links to a second directory
        kNoIfd1,        ///< IFD0 links to no other: a thumbnail directory can be appended
    };
    Outcome outcome;
    uint32_t initPosition;  ///< offset of the TIFF header in the block; unchanged when none was found
};

/**
 * Looks for the TIFF header and behind it for IFD1. Where no header is found it is taken to be at `initPosition`; 0 for
 * not known. Reads inside the block only, whatever it holds.
 */
ExifAnalysis analyseExifBlock(ExifBytes block, uint32_t initPosition);

/** Bytes that `appendThumbnailDirectory` adds beside the thumbnail. */
constexpr size_t kThumbnailDirectorySize = 95;

/**
 * Writes `block` with an IFD1 for the JPEG `thumbnail` behind it: block.size + kThumbnailDirectorySize + thumbnail.size
 * bytes at `out`. The block is one that `analyseExifBlock` found to have no IFD1, its header at `initPosition`. Of the
 * old bytes only IFD0's link changes; framing before the header is left as it is. False if the block has changed since
 * and has no room for the link.
 */
bool appendThumbnailDirectory(ExifBytes block, uint32_t initPosition, ExifBytes thumbnail, uint8_t* out);

}  // namespace android
