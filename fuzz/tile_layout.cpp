// Tiles of a frame of any geometry and format, for codec buffers and for surfaces, stay inside of both.
#include "CameraFrame.h"
#include "TileLayout.h"

using namespace android;
using namespace quill::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int32_t kLargestSide = 700, kLargestGap = 70;
    ByteSource script(data, size);
    const CameraFrame frame(script, kLargestSide);
    if (frame.bytes == nullptr) return 0;
    const FrameGeometry& g = frame.geometry;
    const int32_t tiles = ((g.width - 1) / kTileSide + 1) * ((g.height - 1) / kTileSide + 1);
    const int32_t tile = script.number(0, tiles - 1);
    static TailBlock block(size_t{4} * (kTileSide + kLargestGap) * kTileSide);
    const auto bytes = static_cast<size_t>(tileBytes(frame.format));
    copyTile(block.last(bytes), frame.bytes, tileCopies(frame.format, g, tileArea(g, tile)));

    if (frame.format.chroma == Chroma::kPlanar) return 0;
    const int64_t stride = kTileSide + script.number(0, kLargestGap);
    uint8_t* const surface = block.last(static_cast<size_t>(frame.format.bytes(stride * kTileSide)));
    fillSurfaceTile(surface, frame.bytes, frame.format, g, tile, {stride, kTileSide});
    return 0;
}
