// Tiles of a frame of any geometry and format, for codec buffers and for surfaces, stay inside of both.
#include "CameraFrame.h"
#include "TileLayout.h"

using namespace android;
using namespace quill::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int32_t kWidestGap = 64;
    ByteSource script(data, size);
    const CameraFrame frame(script);
    if (frame.bytes == nullptr) return 0;
    const FrameGeometry& g = frame.geometry;
    const int32_t tiles = ((g.width - 1) / kTileSide + 1) * ((g.height - 1) / kTileSide + 1);
    const int32_t tile = script.number() % tiles;
    static std::vector<uint8_t> block(size_t{4} * (kTileSide + kWidestGap) * kTileSide);
    copyTile(lastOf(block, tileBytes(frame.format)), frame.bytes, tileCopies(frame.format, g, tileArea(g, tile)));

    // Many pixels that repeat the edge take a millisecond and show nothing that a few do not.
    constexpr int32_t kManyPixels = 8192;
    const bool isFilledSoon = (kTileSide - std::min(kTileSide, g.width)) * g.sliceHeight < kManyPixels;
    if (frame.format.chroma == Chroma::kPlanar || !isFilledSoon) return 0;
    const int64_t stride = kTileSide + script.byte() % kWidestGap;
    uint8_t* const surface = lastOf(block, frame.format.bytes(stride * kTileSide));
    fillSurfaceTile(surface, frame.bytes, frame.format, g, tile, {stride, kTileSide});
    return 0;
}
