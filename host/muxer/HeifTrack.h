#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <media/stagefright/foundation/AMessage.h>

#include "HevcConfig.h"

namespace quill::host {

struct HeifGrid {
    uint32_t tileWidth;
    uint32_t tileHeight;
    uint32_t rows;
    uint32_t columns;
};

/** One image to be written. Sizes in pixels. */
struct HeifTrack {
    uint32_t width = 0;  ///< of the whole image, before rotation
    uint32_t height = 0;
    std::optional<HeifGrid> grid;
    bool isDefault = false;
    HevcConfig config;
    std::vector<Bytes> samples;  ///< coded tiles so far, row-major, each NAL unit after its length

    size_t tileCount() const { return grid ? size_t{grid->rows} * grid->columns : 1; }
    /** The tiles and, with a grid, the image derived from them. */
    size_t itemCount() const { return tileCount() + (grid ? 1 : 0); }
};

/** From a track's format; nothing, with the reason in `problem`, if a key is missing or invalid. */
std::optional<HeifTrack> makeHeifTrack(const android::sp<android::AMessage>& format, std::string* problem);

}  // namespace quill::host
