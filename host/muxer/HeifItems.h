#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "HeifTrack.h"

namespace quill::host {

/** A property of `ipco` as an item uses it. */
struct HeifPropertyUse {
    uint16_t index;  ///< from 1
    bool essential;
};

/** One item of the file. Views into the tracks' samples where the body is a coded picture. */
struct HeifItem {
    uint16_t id = 0;
    std::string_view type;
    std::string_view contentType;  ///< of a `mime` item
    bool hidden = false;
    bool inItemData = false;  ///< body in `idat` instead of `mdat`
    Bytes ownBody;            ///< empty when `tile` is the body
    ByteView tile;
    std::string_view referenceType;  ///< empty without references
    std::vector<uint16_t> references;
    std::vector<HeifPropertyUse> properties;

    ByteView body() const { return ownBody.empty() ? tile : ByteView(ownBody); }
};

/** Everything a HEIF file says, before it is laid out. Must not outlive the tracks. */
struct HeifContents {
    bool isMainProfile = true;  ///< of the primary image: `heic`, otherwise `heix`
    uint16_t primaryId = 0;
    std::vector<Bytes> properties;  ///< whole boxes, shared between items
    std::vector<HeifItem> items;    ///< ids ascending
};

/** Ids are 16 bits wide and start at 1. */
constexpr size_t kMaxHeifItems = 65535;

/**
 * The items of complete tracks (at least one, with all their samples) in the order of the tracks, tiles row-major
 * before the image derived from them, then the metadata samples that can be recognised. `clockwiseDegrees`: 0, 90, 180,
 * 270. There are at most kMaxHeifItems.
 */
HeifContents buildHeifContents(const std::vector<HeifTrack>& tracks, const std::vector<Bytes>& metadata,
                               int clockwiseDegrees);

}  // namespace quill::host
