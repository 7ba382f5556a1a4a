#include "HeifTrack.h"

#include <algorithm>

#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AString.h>

namespace quill::host {

namespace {

using android::ABuffer;
using android::AMessage;
using android::AString;
using android::sp;

constexpr char kCodecDataKey[] = "csd-0";
// Rows and columns minus one are stored in a byte each (ISO/IEC 23008-12, 6.6.2.3).
constexpr uint32_t kMaxGridSide = 256;

bool findPositive(const sp<AMessage>& format, const char* key, uint32_t* value) {
    int32_t found = 0;
    if (!format->findInt32(key, &found) || found <= 0) return false;
    *value = static_cast<uint32_t>(found);
    return true;
}

bool isHeic(const sp<AMessage>& format) {
    AString mime;
    return format->findString(KEY_MIME, &mime) && mime == AString(MIMETYPE_IMAGE_ANDROID_HEIC);
}

/** False if only some of the grid's keys are present or one of them is not positive. */
bool readGrid(const sp<AMessage>& format, std::optional<HeifGrid>* grid) {
    const char* const keys[] = {KEY_TILE_WIDTH, KEY_TILE_HEIGHT, KEY_GRID_ROWS, KEY_GRID_COLUMNS};
    const auto present = [&](const char* key) { return format->contains(key); };
    if (std::none_of(std::begin(keys), std::end(keys), present)) return true;
    HeifGrid found{};
    uint32_t* const values[] = {&found.tileWidth, &found.tileHeight, &found.rows, &found.columns};
    for (size_t i = 0; i < std::size(keys); ++i) {
        if (!findPositive(format, keys[i], values[i])) return false;
    }
    *grid = found;
    return true;
}

bool gridCovers(const HeifGrid& grid, const HeifTrack& track) {
    return grid.rows <= kMaxGridSide && grid.columns <= kMaxGridSide &&
           uint64_t{grid.tileWidth} * grid.columns >= track.width &&
           uint64_t{grid.tileHeight} * grid.rows >= track.height;
}

bool readConfig(const sp<AMessage>& format, HevcConfig* config) {
    sp<ABuffer> codecData;
    if (!format->findBuffer(kCodecDataKey, &codecData) || codecData == nullptr || !codecData->data()) return false;
    auto parsed = parseHevcConfig({codecData->data(), codecData->size()});
    if (!parsed) return false;
    *config = std::move(*parsed);
    return true;
}

/** Tiles must have exactly their coded size. A single picture may be coded larger and is cropped. */
bool bitstreamFits(const HeifTrack& track) {
    const HevcSps& sps = track.config.sps;
    if (track.grid) return sps.width == track.grid->tileWidth && sps.height == track.grid->tileHeight;
    return sps.width >= track.width && sps.height >= track.height;
}

const char* fillTrack(const sp<AMessage>& format, HeifTrack* track) {
    if (format == nullptr) return "no format";
    if (!isHeic(format)) return "mime is not image/vnd.android.heic";
    if (!findPositive(format, KEY_WIDTH, &track->width) || !findPositive(format, KEY_HEIGHT, &track->height)) {
        return "width or height is missing or not positive";
    }
    if (!readGrid(format, &track->grid)) return "tile-width, tile-height, grid-rows, grid-cols: all or none, positive";
    if (track->grid && !gridCovers(*track->grid, *track)) return "the grid does not cover the image or is too large";
    if (!readConfig(format, &track->config)) return "csd-0 is missing or has no valid VPS, SPS and PPS";
    if (!bitstreamFits(*track)) return "the coded size does not match the track";
    int32_t isDefault = 0;
    track->isDefault = format->findInt32(KEY_IS_DEFAULT, &isDefault) && isDefault != 0;
    return nullptr;
}

}  // namespace

std::optional<HeifTrack> makeHeifTrack(const sp<AMessage>& format, std::string* problem) {
    HeifTrack track;
    const char* const found = fillTrack(format, &track);
    if (!found) return track;
    *problem = found;
    return std::nullopt;
}

}  // namespace quill::host
