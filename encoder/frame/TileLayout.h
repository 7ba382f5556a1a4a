#pragma once

#include <stddef.h>
#include <stdint.h>

#include "Frame.h"

namespace android {

/** Side of one tile in samples. Frames larger than a tile in either direction are coded as a grid of them. */
constexpr int32_t kTileSide = 512;

/** Bytes of a codec input buffer's tile. */
constexpr int64_t tileBytes(const FrameFormat& format) { return format.bytes(int64_t{kTileSide} * kTileSide); }

/** The part of a frame that one tile covers, in samples. */
struct TileArea {
    int32_t row;     ///< of the tile, counted in tiles
    int32_t column;  ///< of the tile, counted in tiles
    int32_t width;   ///< samples a row, at most 512
    int32_t rows;    ///< luma rows, at most 512; 0 or less when the tile lies below the frame
};

/**
 * Tiles are numbered in row-major order from the top left. Rows are bounded by the slice height, not by the
 * picture height: padding rows are copied as they are, so that the coded tile repeats what the camera laid there.
 */
TileArea tileArea(const FrameGeometry& frame, int32_t tileIndex);

/** One plane of a tile: rows copied from the frame to the tile's own pitch. Offsets and pitches in bytes. */
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

/** Where a tile goes: samples from row to row, and rows before its chroma. */
struct TileBuffer {
    int64_t stride;
    int64_t rows;
};
constexpr TileBuffer kCodecBuffer{kTileSide, kTileSide};

TileCopies tileCopies(const FrameFormat& format, const FrameGeometry& frame, const TileArea& tile,
                      const TileBuffer& buffer = kCodecBuffer);

/** Carries the copies out. The caller answers for both buffers being as large as the copies reach. */
void copyTile(uint8_t* destination, const uint8_t* frame, const TileCopies& copies);

/**
 * Lays a tile of an RGBA or semi-planar frame into a buffer of the codec's input surface. What the picture leaves free
 * of 512 x 512 repeats its edge; of an odd width the last chroma pair is whole, if the frame has it.
 */
void fillSurfaceTile(uint8_t* destination, const uint8_t* frame, const FrameFormat& format,
                     const FrameGeometry& geometry, int32_t tileIndex, const TileBuffer& buffer);

}  // namespace android
