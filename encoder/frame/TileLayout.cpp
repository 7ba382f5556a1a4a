#include "TileLayout.h"

#include <string.h>

#include <algorithm>

namespace android {

namespace {

constexpr int64_t kHalfSide = kTileSide / 2;

constexpr int64_t kCacheLine = 64;
constexpr int64_t kBytesAhead = 4096;  // asked for before they are copied: 4096 to 16384 measure alike
constexpr int kSecondCache = 2;        // RGBA tiles by way of it take 0.8 of the time

const uint8_t* sourceRow(const uint8_t* frame, const PlaneCopy& plane, int64_t row) {
    return frame + plane.sourceOffset + row * plane.sourcePitchTwice / 2;
}

/** Prefetches a row: a tile's rows lie too far apart for the processor to prefetch by itself. */
void prefetch(const uint8_t* row, int64_t bytes) {
    for (int64_t offset = 0; offset < bytes; offset += kCacheLine) __builtin_prefetch(row + offset, 0, kSecondCache);
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

/** Repeats the last `unit` bytes of a row, and the last row, until the plane is `rowBytes` x `rows`. */
void repeatEdges(uint8_t* destination, const PlaneCopy& plane, int64_t unit, int64_t rowBytes, int64_t rows) {
    const int64_t copied = plane.rowBytes / unit * unit;
    if (copied == 0 || plane.rows < 1) return;
    uint8_t* row = destination + plane.destinationOffset;
    for (int64_t i = 0; i < plane.rows; ++i, row += plane.destinationPitch) {
        for (int64_t at = copied; at < rowBytes; at += unit) memcpy(row + at, row + copied - unit, unit);
    }
    const uint8_t* const last = row - plane.destinationPitch;
    for (int64_t i = plane.rows; i < rows; ++i, row += plane.destinationPitch) memcpy(row, last, rowBytes);
}

}  // namespace

TileArea tileArea(const FrameGeometry& frame, int32_t tileIndex) {
    const int32_t columns = (frame.width - 1) / kTileSide + 1;
    const int32_t row = tileIndex / columns;
    const int32_t column = tileIndex % columns;
    return {row, column, std::min(kTileSide, frame.width - kTileSide * column),
            std::min(kTileSide, frame.sliceHeight - kTileSide * row)};
}

TileCopies tileCopies(const FrameFormat& format, const FrameGeometry& frame, const TileArea& tile,
                      const TileBuffer& buffer) {
    const int64_t bytes = format.sampleBytes, samples = frame.samples(), stride = frame.stride;
    const int64_t left = int64_t{kTileSide} * tile.column, top = int64_t{kTileSide} * tile.row;
    const int64_t pitch = bytes * buffer.stride, chroma = pitch * buffer.rows, rows = tile.rows / 2;
    const PlaneCopy luma{bytes * (top * stride + left), 2 * bytes * stride, 0, pitch, bytes * tile.width, tile.rows};
    if (format.chroma == Chroma::kNone) return {{luma}, 1};
    if (format.chroma == Chroma::kInterleaved) {
        const int64_t origin = bytes * (samples + top / 2 * stride + left);
        return {{luma, {origin, 2 * bytes * stride, chroma, pitch, bytes * tile.width, rows}}, 2};
    }
    const int64_t u = samples + left / 2 + top / 2 * stride / 2, half = buffer.stride / 2;
    return {{luma,
             {u, stride, chroma, half, tile.width / 2, rows},
             {u + samples / 4, stride, chroma + half * buffer.rows / 2, half, tile.width / 2, rows}},
            3};
}

void copyTile(uint8_t* destination, const uint8_t* frame, const TileCopies& copies) {
    for (size_t p = 0; p < copies.count; ++p) copyPlane(destination, frame, copies.planes[p]);
}

void fillSurfaceTile(uint8_t* destination, const uint8_t* frame, const FrameFormat& format,
                     const FrameGeometry& geometry, int32_t tileIndex, const TileBuffer& buffer) {
    const TileArea tile = tileArea(geometry, tileIndex);
    TileCopies copies = tileCopies(format, geometry, tile, buffer);
    const int32_t inRow = geometry.stride - kTileSide * tile.column;
    copies.planes[1].rowBytes = int64_t{format.sampleBytes} * std::min(tile.width + tile.width % 2, inRow);
    copyTile(destination, frame, copies);
    const int64_t rowBytes = int64_t{format.sampleBytes} * kTileSide;
    repeatEdges(destination, copies.planes[0], format.sampleBytes, rowBytes, kTileSide);
    if (copies.count > 1)
        repeatEdges(destination, copies.planes[1], int64_t{2} * format.sampleBytes, rowBytes, kHalfSide);
}

}  // namespace android
