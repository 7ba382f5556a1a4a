// Frames cut into tiles, and the chroma swap that comes before it for NV21.
#include <cstring>
#include <memory>
#include <string>

#include "ChromaOrder.h"
#include "Frames.h"
#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "Rows.h"
#include "Subjects.h"
#include "TileLayout.h"

namespace quill::bench {

namespace {

using namespace android;
using Bytes = std::vector<uint8_t>;

constexpr const char* kFormats[] = {"i420", "p010", "rgba", "nv12", "nv21"};

int across(int samples) { return (samples + kTileSide - 1) / kTileSide; }

size_t tileBytes(InputColorFormat format) {
    if (format == FORMAT_RGBA8888) return kTileBytesRgba;
    return format == FORMAT_P010 ? kTileBytesP010 : kTileBytesYuv8;
}

/** Bytes of the picture that the tiles carry: the rows that the frame is allotted, without the padding beside them. */
size_t cutBytes(InputColorFormat format, const Geometry& frame) {
    return test::frameBytes(format, {frame.width, frame.sliceHeight, frame.width, frame.sliceHeight});
}

/** Input buffers that a codec hands out again and again; the stand-in has four to eight, by the machine. */
constexpr int kCodecBuffers = 8;

Sides tileSides(InputColorFormat format, const Geometry& geometry) {
    const auto frame = std::make_shared<Bytes>(test::frameBytes(format, geometry), 100);
    const int count = across(geometry.width) * across(geometry.height);
    const auto buffers = std::make_shared<Bytes>(tileBytes(format) * kCodecBuffers);
    const auto copy = std::make_shared<Bytes>(cutBytes(format, geometry));
    const sp<QuillHeifEncoder> encoder =
            new QuillHeifEncoder(geometry.width, geometry.height, geometry.stride, geometry.sliceHeight, format, 95);
    return {[=] {
                for (int i = 0; i < count; ++i) {
                    const auto buffer = static_cast<size_t>(i % kCodecBuffers);
                    encoder->fillInputBuffer(buffers->data() + tileBytes(format) * buffer, frame->data(), i, kTileSide);
                }
            },
            [=] { memcpy(copy->data(), frame->data(), copy->size()); }};
}

Sides swapSides(const Geometry& geometry) {
    const size_t planeBytes = size_t{1} * geometry.stride * geometry.sliceHeight / 2;
    const auto plane = std::make_shared<Bytes>(planeBytes, 100);
    return {[=] {
                swapChromaPairs({plane->data(), geometry.width, geometry.height, geometry.stride,
                                 static_cast<int64_t>(planeBytes)});
            },
            [=] {
                for (uint8_t& byte : *plane) byte = static_cast<uint8_t>(~byte);
            }};
}

}  // namespace

void addTileCutting(const Effort& effort) {
    for (const char* name : kFormats) {
        addPairedRow(("tiles/" + std::string(name)).c_str(), effort.pairs,
                     [=, frame = effort.frame] { return tileSides(formatNamed(name), frame); });
    }
    addPairedRow("swap/nv21", effort.pairs, [frame = effort.frame] { return swapSides(frame); });
}

}  // namespace quill::bench
