// A frame of any geometry: the writer takes it or refuses it as it should, and one that it takes becomes NV12 and a
// thumbnail.
#include <media/stagefright/MediaMuxer.h>

#include "ByteSource.h"
#include "CameraFrame.h"
#include "ChromaOrder.h"
#include "InputColorFormat.h"
#include "PixelConversion.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace {

using namespace android;
using namespace quill::fuzz;

constexpr int kSmallSide = 90;
constexpr int32_t kExtremes[] = {INT32_MIN, -1, 0, 32767, 46341, 65535, 536870911, 536870912, INT32_MAX};

int32_t anySide(ByteSource& script, int32_t low) {
    switch (script.number(0, 15)) {
        case 14:
            return script.oneOf(kExtremes);
        case 15:
            return script.number(INT32_MIN, INT32_MAX);
        default:
            return std::min(low, kSmallSide) + script.number(0, kSmallSide);
    }
}

Geometry anyGeometry(ByteSource& script) {
    Geometry frame{};
    frame.format = script.number<int32_t>(FORMAT_I420, FORMAT_NV21 + 1);
    frame.width = anySide(script, 1);
    frame.height = anySide(script, 1);
    frame.stride = anySide(script, std::max(frame.width, 0));
    frame.sliceHeight = anySide(script, std::max(frame.height, 0));
    return frame;
}

bool isSane(const Geometry& frame) {
    return frame.width > 0 && frame.height > 0 && frame.stride >= frame.width && frame.sliceHeight >= frame.height &&
           4.0 * frame.stride * frame.sliceHeight <= INT32_MAX;
}

/** Where luma sample `i` of the frame's area comes from. */
uint8_t lumaOf(const uint8_t* frame, int32_t format, size_t i) {
    if (format == FORMAT_P010) return frame[2 * i + 1];
    if (format == FORMAT_RGBA8888) return rgbToLuma(frame[4 * i], frame[4 * i + 1], frame[4 * i + 2]);
    return frame[i];
}

/** Both bytes of the first chroma pair and of one more, in an area of even sides. */
void checkChroma(const uint8_t* frame, const uint8_t* nv12, const Geometry& geometry, size_t pair) {
    const size_t stride = static_cast<size_t>(geometry.stride), samples = stride * geometry.sliceHeight;
    const size_t at = samples + 2 * pair;
    if (geometry.format == FORMAT_I420) {
        require(nv12[at] == frame[samples + pair] && nv12[at + 1] == frame[samples + samples / 4 + pair], "U and V");
    } else if (geometry.format == FORMAT_P010) {
        require(nv12[at] == frame[2 * at + 1] && nv12[at + 1] == frame[2 * at + 3], "high bytes of U and V");
    } else if (geometry.format == FORMAT_RGBA8888) {
        const size_t row = pair / (stride / 2), column = pair % (stride / 2);
        const uint8_t* const pixel = frame + 4 * (2 * row * stride + 2 * column);
        require(nv12[at] == rgbToU(pixel[0], pixel[1], pixel[2]) &&
                        nv12[at + 1] == rgbToV(pixel[0], pixel[1], pixel[2]),
                "U and V of the pixel at the top left");
    } else {
        require(nv12[at] == frame[at] && nv12[at + 1] == frame[at + 1], "pairs as they were");
    }
}

/** Undone in the end: the frame is left as it was. */
void checkChromaSwap(uint8_t* frame, const Geometry& geometry) {
    if (geometry.stride < geometry.width + geometry.width % 2) return;  // a pair reaches into the row below
    const int64_t luma = int64_t{geometry.stride} * geometry.sliceHeight;
    const Bytes before(frame, frame + geometry.bytes());
    const ChromaPlane plane{frame + luma, geometry.width, geometry.height, geometry.stride, luma / 2};
    swapChromaPairs(plane);
    if (geometry.height > 1) {
        require(plane.data[0] == before[luma + 1] && plane.data[1] == before[luma], "the first pair swapped");
    }
    swapChromaPairs(plane);
    require(memcmp(before.data(), frame, before.size()) == 0, "a swap undone by another");
}

void checkThumbnail(QuillHeifWriter& writer, uint8_t* nv12) {
    const size_t capacity = writer.thumbnailCapacity();
    const std::unique_ptr<uint8_t[]> jpeg(new uint8_t[capacity]);
    const int size = writer.creatThmb(nv12, jpeg.get());
    if (size == -1) return;
    require(size > 4 && static_cast<size_t>(size) <= capacity, "a JPEG that fits");
    require(jpeg[0] == 0xFF && jpeg[1] == 0xD8 && jpeg[size - 2] == 0xFF && jpeg[size - 1] == 0xD9, "a whole JPEG");
}

void checkPixels(QuillHeifWriter& writer, const Geometry& geometry, ByteSource& script) {
    uint8_t* const frame = cameraFrame(geometry);
    if (geometry.format == FORMAT_NV21) checkChromaSwap(frame, geometry);
    const AllottedArea area{geometry.stride, geometry.sliceHeight};
    static TailBlock block(kLargestFrame);
    uint8_t* const nv12 = block.last(area.nv12Bytes(), 0);
    const bool known = geometry.format <= FORMAT_NV21;
    require(writer.saveYuvBuf(frame, nv12) == (known ? 1 : -1), "layouts that are known");
    if (!known) return;
    const size_t samples = static_cast<size_t>(area.lumaSamples());
    for (size_t i = 0; i < samples; ++i) {
        require(nv12[i] == lumaOf(frame, geometry.format, i), "luma as defined");
    }
    if (geometry.stride % 2 == 0 && geometry.sliceHeight % 2 == 0) {
        checkChroma(frame, nv12, geometry, 0);
        checkChroma(frame, nv12, geometry, script.number<size_t>(0, samples / 4 - 1));
    }
    // The costly part: not for every input, nor for tall thumbnails.
    if (script.number(0, 3) == 3 && geometry.height <= 2 * geometry.width) checkThumbnail(writer, nv12);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int noCodecs = setenv("QUILL_DEVICE", "no-codec-list", 1);  // the geometry alone is looked at
    ByteSource script(data, size);
    const Geometry geometry = anyGeometry(script);
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const status_t status = noCodecs + writer->initEncoder(geometry.width, geometry.height, geometry.stride,
                                                           geometry.sliceHeight, geometry.format, 95, 0);
    require(status == (isSane(geometry) ? NO_INIT : BAD_VALUE), "a geometry refused exactly when it is not sane");
    if (status == BAD_VALUE) return 0;
    const FrameBytes bytes = frameBytes(geometry.width, geometry.stride, geometry.sliceHeight, geometry.format);
    require(bytes.least <= bytes.whole && bytes.least >= 0 && bytes.whole <= INT32_MAX, "sizes of a frame");
    if (bytes.whole <= static_cast<int64_t>(kLargestFrame)) checkPixels(*writer, geometry, script);
    return 0;
}
