// A frame of any geometry and format becomes NV12 and a thumbnail, and is read and written inside of itself only.
#include "CameraFrame.h"
#include "Nv12Conversion.h"
#include "Thumbnail.h"
#include "ThumbnailJpeg.h"

using namespace android;
using namespace quill::fuzz;

namespace {

/** With odd sides there is half a pair a row and half a row more than in a camera's frame. */
int64_t nv12Bytes(const FrameGeometry& g) {
    const int64_t width = g.stride, rows = g.sliceHeight;
    return width * rows + (width + 1) * ((rows + 1) / 2) + 1;
}

void convert(const CameraFrame& frame, uint8_t* nv12) {
    if (frame.format.chroma == Chroma::kNone) convertRgba8888(frame.bytes, frame.geometry, nv12);
    if (frame.format.chroma == Chroma::kPlanar) convertI420(frame.bytes, frame.geometry, nv12);
    if (frame.format.bitDepth > 8) convertP010(frame.bytes, frame.geometry, nv12);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    const CameraFrame frame(script);
    if (frame.bytes == nullptr) return 0;
    const FrameGeometry& g = frame.geometry;
    const ThumbnailSize small{2 * (1 + script.byte() % 16), 2 * (1 + script.byte() % 16)};
    static std::vector<uint8_t> thumbnails(4096), frames(4 * CameraFrame::kLargest);
    uint8_t* const thumbnail = lastOf(thumbnails, small.yuvBytes());

    if (frame.format.hasVBeforeU) swapChromaPairs(frame.bytes, g);
    sampleThumbnail(frame.bytes, frame.format, g, small, thumbnail);
    uint8_t* const nv12 = lastOf(frames, nv12Bytes(g));
    convert(frame, nv12);
    downscaleNv12(nv12, g, small, thumbnail);
    if (script.byte() != 1) return 0;
    uint8_t jpeg[4096];
    const int bytes = compressThumbnail(thumbnail, small, jpeg, sizeof(jpeg));
    require(bytes == -1 || (bytes > 4 && jpeg[0] == 0xFF && jpeg[bytes - 1] == 0xD9), "a whole JPEG");
    return 0;
}
