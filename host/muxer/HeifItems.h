#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "HeifTrack.h"

namespace quill::host {

/** A reference from an item to a property in `ipco`. */
struct HeifPropertyUse {
    uint16_t index;  ///< from 1
    bool essential;
};

/** One item of the file. The body of a coded picture is a view into the tracks' samples. */
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

/** The contents of a HEIF file before layout. Must not outlive the tracks. */
struct HeifContents {
    bool isMainProfile = true;  ///< of the primary image: `heic`, otherwise `heix`
    uint16_t primaryId = 0;
    std::vector<Bytes> properties;  ///< whole boxes, shared between items
    std::vector<HeifItem> items;    ///< ids ascending
};

/** Ids are 16 bits wide and start at 1. */
constexpr size_t kMaxHeifItems = 65535;

/**
 * The items of complete tracks (at least one, each with all its samples) in track order: tiles row-major, then the
 * image derived from them, and after all tracks the metadata of a known kind. `clockwiseDegrees`: 0, 90, 180, 270.
 * There are at most kMaxHeifItems.
 */
HeifContents buildHeifContents(const std::vector<HeifTrack>& tracks, const std::vector<Bytes>& metadata,
                               int clockwiseDegrees);

}  // namespace quill::host
