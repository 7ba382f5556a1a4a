#include "TileLayout.h"

#include <string.h>

#include <algorithm>

#include "HeicEncoderInfoManager.h"

namespace android {

namespace {

constexpr int64_t kTileSamples = int64_t{kTileSide} * kTileSide;
constexpr int64_t kHalfSide = kTileSide / 2;
constexpr int64_t kBytesP010 = 2;  // bytes a sample
constexpr int64_t kBytesRgba = 4;  // bytes a pixel

constexpr int64_t kCacheLine = 64;
constexpr int64_t kBytesAhead = 4096;  // asked for before they are copied: 4096 to 16384 measure alike

/** First sample of the tile in the luma plane, as an offset in samples. */
int64_t lumaOrigin(const FrameGeometry& frame, const TileArea& tile) {
    return int64_t{kTileSide} * tile.row * frame.stride + int64_t{kTileSide} * tile.column;
}

/** Luma and interleaved chroma of a semi-planar frame, `sampleBytes` bytes a sample. */
TileCopies semiPlanarCopies(const FrameGeometry& frame, const TileArea& tile, int64_t sampleBytes) {
    const int64_t pitch = sampleBytes * frame.stride;
    const int64_t tilePitch = sampleBytes * kTileSide;
    const int64_t rowBytes = sampleBytes * tile.width;
    const int64_t chromaOrigin = int64_t{frame.stride} * frame.verticalStride + kHalfSide * tile.row * frame.stride +
                                 int64_t{kTileSide} * tile.column;
    return {{{sampleBytes * lumaOrigin(frame, tile), 2 * pitch, 0, tilePitch, rowBytes, tile.rows},
             {sampleBytes * chromaOrigin, 2 * pitch, sampleBytes * kTileSamples, tilePitch, rowBytes, tile.rows / 2}},
            2};
}

const uint8_t* sourceRow(const uint8_t* frame, const PlaneCopy& plane, int64_t row) {
    return frame + plane.sourceOffset + row * plane.sourcePitchTwice / 2;
}

/** Asks for a row's memory: a tile's rows lie too far apart for the processor to see by itself what comes next. */
void prefetch(const uint8_t* row, int64_t bytes) {
    for (int64_t offset = 0; offset < bytes; offset += kCacheLine) __builtin_prefetch(row + offset);
}

void copyPlane(uint8_t* destination, const uint8_t* frame, const PlaneCopy& plane) {
    if (plane.rowBytes < 1) return;
    const int64_t rowsAhead = std::max<int64_t>(1, kBytesAhead / plane.rowBytes);
    for (int64_t row = 0; row < plane.rows; ++row) {
        if (row + rowsAhead < plane.rows) prefetch(sourceRow(frame, plane, row + rowsAhead), plane.rowBytes);
        memcpy(destination + plane.destinationOffset + row * plane.destinationPitch, sourceRow(frame, plane, row),
               static_cast<size_t>(plane.rowBytes));
    }
}

}  // namespace

TileArea tileArea(const FrameGeometry& frame, int32_t tileIndex) {
    const int32_t columns = ((frame.width - 1) >> 9) + 1;
    const int32_t row = tileIndex / columns;
    const int32_t column = tileIndex % columns;
    return {row, column, std::min(kTileSide, frame.width - kTileSide * column),
            std::min(kTileSide, frame.verticalStride - kTileSide * row)};
}

TileCopies nv12TileCopies(const FrameGeometry& frame, const TileArea& tile) { return semiPlanarCopies(frame, tile, 1); }

TileCopies p010TileCopies(const FrameGeometry& frame, const TileArea& tile) {
    return semiPlanarCopies(frame, tile, kBytesP010);
}

TileCopies i420TileCopies(const FrameGeometry& frame, const TileArea& tile) {
    const int64_t planeSamples = int64_t{frame.stride} * frame.verticalStride;
    const int64_t uOrigin = planeSamples + kHalfSide * tile.column + kHalfSide * tile.row * frame.stride / 2;
    const int64_t vOrigin = uOrigin + planeSamples / 4;
    const int64_t chromaBytes = tile.width / 2;
    const int64_t chromaRows = tile.rows / 2;
    return {{{lumaOrigin(frame, tile), 2 * int64_t{frame.stride}, 0, kTileSide, tile.width, tile.rows},
             {uOrigin, frame.stride, kTileSamples, kHalfSide, chromaBytes, chromaRows},
             {vOrigin, frame.stride, kTileSamples + kHalfSide * kHalfSide, kHalfSide, chromaBytes, chromaRows}},
            3};
}

TileCopies rgbaTileCopies(const FrameGeometry& frame, const TileArea& tile, int32_t destinationStride) {
    return {{{kBytesRgba * lumaOrigin(frame, tile), 2 * kBytesRgba * frame.stride, 0, kBytesRgba * destinationStride,
              kBytesRgba * tile.width, tile.rows}},
            1};
}

void copyTile(uint8_t* destination, const uint8_t* frame, const TileCopies& copies) {
    for (size_t p = 0; p < copies.count; ++p) copyPlane(destination, frame, copies.planes[p]);
}

}  // namespace android
