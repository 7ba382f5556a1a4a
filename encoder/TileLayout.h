#pragma once

#include <stddef.h>
#include <stdint.h>

#include "InputColorFormat.h"

namespace android {

/** A frame as its planes lie in memory: picture width, row pitch and rows of the luma plane, all in samples. */
struct FrameGeometry {
    int32_t width;
    int32_t stride;
    int32_t verticalStride;
};

/** The part of a frame that one tile covers, in samples. */
struct TileArea {
    int32_t row;     ///< of the tile, counted in tiles
    int32_t column;  ///< of the tile, counted in tiles
    int32_t width;   ///< samples a row, at most 512
    int32_t rows;    ///< luma rows, at most 512; 0 or less when the tile lies below the frame
};

/**
 * Tiles are numbered in row-major order from the top left. Rows are bounded by the vertical stride, not by the
 * picture height: padding rows are copied as they are, so that the coded tile repeats what the camera laid there.
 */
TileArea tileArea(const FrameGeometry& frame, int32_t tileIndex);

/** One plane of a tile: rows copied from the frame to the tile's own fixed pitch. Offsets and pitches in bytes. */
struct PlaneCopy {
    int64_t sourceOffset;
    /** Twice the source pitch: a chroma row of an I420 frame of odd stride starts half a byte off, truncated. */
    int64_t sourcePitchTwice;
    int64_t destinationOffset;
    int64_t destinationPitch;
    int64_t rowBytes;
    int64_t rows;
};

/** The copies that make up one tile; `count` of them are used. */
struct TileCopies {
    PlaneCopy planes[3];
    size_t count;
};

TileCopies nv12TileCopies(const FrameGeometry& frame, const TileArea& tile);
TileCopies i420TileCopies(const FrameGeometry& frame, const TileArea& tile);
TileCopies p010TileCopies(const FrameGeometry& frame, const TileArea& tile);
/** `destinationStride`: pixels a row of the destination buffer. */
TileCopies rgbaTileCopies(const FrameGeometry& frame, const TileArea& tile, int32_t destinationStride);

/** Carries the copies out. The caller answers for both buffers being as large as the copies reach. */
void copyTile(uint8_t* destination, const uint8_t* frame, const TileCopies& copies);

/** Bytes of one 512x512 tile of 8-bit 4:2:0, of P010 and of RGBA samples. */
constexpr uint64_t kTileBytesYuv8 = 0x60000;
constexpr uint64_t kTileBytesP010 = 0xC0000;
constexpr uint64_t kTileBytesRgba = 0x100000;

}  // namespace android
