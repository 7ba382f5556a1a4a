// A frame of any geometry and format becomes NV12 and a thumbnail, and is read and written inside of itself only.
#include "CameraFrame.h"
#include "Nv12Conversion.h"
#include "Thumbnail.h"
#include "ThumbnailJpeg.h"

using namespace android;
using namespace quill::fuzz;

namespace {

/** With odd sides there is half a pair a row and half a row more than in a camera's frame. */
size_t nv12Bytes(const FrameGeometry& g) {
    const size_t width = static_cast<size_t>(g.stride), rows = static_cast<size_t>(g.sliceHeight);
    return width * rows + (width + 1) * ((rows + 1) / 2) + 1;
}

void convert(const CameraFrame& frame, uint8_t* nv12) {
    if (frame.format.chroma == Chroma::kNone) convertRgba8888(frame.bytes, frame.geometry, nv12);
    if (frame.format.chroma == Chroma::kPlanar) convertI420(frame.bytes, frame.geometry, nv12);
    if (frame.format.bitDepth > 8) convertP010(frame.bytes, frame.geometry, nv12);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr int32_t kLargestSide = 90;
    ByteSource script(data, size);
    const CameraFrame frame(script, kLargestSide);
    if (frame.bytes == nullptr) return 0;
    const FrameGeometry& g = frame.geometry;
    const ThumbnailSize small{2 * script.number(1, 20), 2 * script.number(1, 20)};
    static TailBlock thumbnails(4096), frames(kLargestFrame);
    uint8_t* const thumbnail = thumbnails.last(static_cast<size_t>(small.yuvBytes()));

    if (frame.format.hasVBeforeU) swapChromaPairs(frame.bytes, g);
    sampleThumbnail(frame.bytes, frame.format, g, small, thumbnail);
    if (nv12Bytes(g) <= kLargestFrame) {
        uint8_t* const nv12 = frames.last(nv12Bytes(g));
        convert(frame, nv12);
        downscaleNv12(nv12, g, small, thumbnail);
    }
    if (script.number(0, 63) == 63) {
        uint8_t jpeg[4096];
        const int bytes = compressThumbnail(thumbnail, small, jpeg, sizeof(jpeg));
        require(bytes == -1 || (bytes > 4 && jpeg[0] == 0xFF && jpeg[bytes - 1] == 0xD9), "a whole JPEG");
    }
    return 0;
}
