// One tile of a frame of any geometry and layout, against the definition of where its rows lie and where they go.
#include "ByteSource.h"
#include "CameraFrame.h"
#include "QuillHeifEncoder.h"
#include "TileLayout.h"

namespace {

using namespace android;
using namespace quill::fuzz;

constexpr int kLargestSide = 1100, kLargestPadding = 70, kMostSamples = 400000;
constexpr size_t kLargestTile = size_t{4} * 512 * (512 + kLargestPadding);
constexpr uint8_t kUntouched = 0x5A;

Geometry anyGeometry(ByteSource& script) {
    Geometry frame{};
    frame.format = script.number<int32_t>(FORMAT_I420, FORMAT_NV21 + 1);
    frame.width = script.number(1, kLargestSide);
    frame.stride = frame.width + script.number(0, kLargestPadding);
    const int rows = std::min(kLargestSide, kMostSamples / frame.stride);
    frame.height = script.number(1, rows);
    frame.sliceHeight = std::min(rows, frame.height + script.number(0, kLargestPadding));
    return frame;
}

size_t tileBytes(int32_t format, int stride) {
    if (format == FORMAT_RGBA8888) return kTileBytesRgba / 512 * static_cast<size_t>(stride);
    return format == FORMAT_P010 ? kTileBytesP010 : kTileBytesYuv8;
}

/** S: stride, V: slice height, r and c: of the tile, w x h: what it covers of the frame. */
void fillAsDefined(uint8_t* tile, const uint8_t* frame, const Geometry& geometry, int k, int destinationStride) {
    const int S = geometry.stride, V = geometry.sliceHeight, columns = (geometry.width + 511) / 512;
    const int r = k / columns, c = k % columns;
    const int w = std::min(512, geometry.width - 512 * c), h = std::min(512, V - 512 * r);
    const bool rgba = geometry.format == FORMAT_RGBA8888;
    const int bytes = rgba ? 4 : geometry.format == FORMAT_P010 ? 2 : 1;
    const int pitch = rgba ? destinationStride : 512;
    if (geometry.format > FORMAT_NV21) return;
    for (int i = 0; i < h; ++i) {
        memcpy(tile + bytes * i * pitch, frame + bytes * (512 * r * S + 512 * c + i * S), bytes * w);
    }
    for (int i = 0; !rgba && i < h / 2; ++i) {
        if (geometry.format == FORMAT_I420) {
            const int u = S * V + 256 * c + 256 * r * S / 2 + S * i / 2;
            memcpy(tile + 262144 + 256 * i, frame + u, w / 2);
            memcpy(tile + 327680 + 256 * i, frame + u + S * V / 4, w / 2);
        } else {
            const int pair = S * V + 512 * r * S / 2 + 512 * c + i * S;
            memcpy(tile + bytes * (262144 + 512 * i), frame + bytes * pair, bytes * w);
        }
    }
}

/** A picture re-pitched row by row, both planes. */
void checkAlignment(QuillHeifEncoder& encoder, ByteSource& script) {
    const int width = script.number(1, 40), height = script.number(0, 40), rows = height + height / 2;
    const int alignedWidth = width + script.number(0, 9), alignedHeight = height + script.number(0, 9);
    uint8_t* const frame = cameraFrame({width, height, width, height, FORMAT_P010});
    Bytes aligned(static_cast<size_t>(2 * alignedWidth * (alignedHeight + height / 2)), kUntouched);
    Bytes expected = aligned;
    for (int row = 0; row < rows; ++row) {
        const int target = row < height ? row : alignedHeight + row - height;
        std::copy_n(frame + 2 * width * row, 2 * width, expected.begin() + 2 * alignedWidth * target);
    }
    encoder.bufferAlign(frame, width, height, alignedWidth, alignedHeight, aligned.data());
    require(aligned == expected, "rows at their new pitch");
}

/** Tiles of a frame without padding, all in one buffer, are those cut out one by one. */
template <typename Tiler>
void checkWholeTiles(Geometry geometry, Tiler cutAll) {
    geometry.stride = geometry.width;
    geometry.sliceHeight = geometry.height;
    const uint8_t* const frame = cameraFrame(geometry);
    const int columns = geometry.width / 512, rows = geometry.height / 512, allColumns = (geometry.width + 511) / 512;
    const size_t size = tileBytes(geometry.format, 0);
    static TailBlock block(4 * kTileBytesP010);
    uint8_t* const all = block.last(size * static_cast<size_t>(columns * rows));
    cutAll(all);
    Bytes expected(columns * rows == 0 ? 0 : size);
    for (int k = 0; k < columns * rows; ++k) {
        fillAsDefined(expected.data(), frame, geometry, k / columns * allColumns + k % columns, 0);
        require(memcmp(expected.data(), all + size * static_cast<size_t>(k), size) == 0, "a whole tile");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    const Geometry geometry = anyGeometry(script);
    const int columns = (geometry.width + 511) / 512, rows = (geometry.height + 511) / 512;
    const int tile = script.number(0, columns * rows - 1);
    const int destinationStride = 512 + script.number(0, kLargestPadding);
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(geometry.width, geometry.height, geometry.stride,
                                                              geometry.sliceHeight, geometry.format, 95);
    uint8_t* const frame = cameraFrame(geometry);
    const size_t bytes = tileBytes(geometry.format, destinationStride);
    static TailBlock filledBlock(kLargestTile), expectedBlock(kLargestTile);
    uint8_t* const filled = filledBlock.last(bytes, kUntouched);
    uint8_t* const expected = expectedBlock.last(bytes, kUntouched);
    encoder->fillInputBuffer(filled, frame, tile, destinationStride);
    fillAsDefined(expected, frame, geometry, tile, destinationStride);
    require(memcmp(filled, expected, bytes) == 0, "a tile as defined");

    checkAlignment(*encoder, script);
    const int width = geometry.width, height = geometry.height;
    uint8_t* const unpadded = cameraFrame({width, height, width, height, geometry.format});
    if (geometry.format == FORMAT_P010) {
        checkWholeTiles(geometry, [&](uint8_t* to) { encoder->split10BitYuvData(unpadded, width, height, to); });
    }
    if (geometry.format == FORMAT_NV12) {
        checkWholeTiles(geometry, [&](uint8_t* to) { encoder->splitYuvData(unpadded, width, height, to); });
    }
    return 0;
}
