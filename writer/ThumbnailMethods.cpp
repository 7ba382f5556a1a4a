#include <string.h>

#include <algorithm>
#include <memory>
#include <new>

#include <media/stagefright/MediaMuxer.h>

#include "Downscale.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"
#include "ThumbnailJpeg.h"

namespace android {

namespace {

constexpr int32_t kThmbWidth = 256;
/** Far beyond any JPEG, and far enough below the largest int to be counted with. */
constexpr float kOverLarge = 1 << 20;

}  // namespace

void QuillHeifWriter::setThmbSize() {
    mThmbWidth = kThmbWidth;
    const float ratio = static_cast<float>(static_cast<double>(mHeight) / mWidth);
    mThmbHeight = static_cast<int32_t>(std::min(ratio * kThmbWidth, kOverLarge));
    if (mThmbHeight > 0 && mThmbHeight % 2 != 0) ++mThmbHeight;  // even, for the 4:2:0 chroma
}

size_t QuillHeifWriter::thumbnailCapacity() const {
    const ThumbnailSize size{mThmbWidth, mThmbHeight};
    return isJpegSize(size) ? static_cast<size_t>(size.yuvBytes()) : 0;
}

int QuillHeifWriter::creatThmb(uint8_t* src, uint8_t* dst) {
    const size_t bytes = thumbnailCapacity();
    if (bytes == 0) return -1;
    const std::unique_ptr<uint8_t[]> thumbnail(new (std::nothrow) uint8_t[bytes]());
    if (thumbnail == nullptr) return -1;
    subsamplingYuv(src, thumbnail.get());
    return yuvToJpeg(thumbnail.get(), dst);
}

int QuillHeifWriter::yuvToJpeg(uint8_t* nv12, uint8_t* dst) {
    return compressThumbnail(nv12, {mThmbWidth, mThmbHeight}, dst, thumbnailCapacity());
}

}  // namespace android
