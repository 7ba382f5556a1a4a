#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <string.h>

#include <algorithm>
#include <memory>
#include <new>

#include <log/log.h>

#include "InputFrame.h"
#include "Nv12Conversion.h"
#include "Thumbnail.h"
#include "ThumbnailJpeg.h"

namespace android {

namespace {

constexpr int32_t kThmbWidth = 256;
/** Far beyond any JPEG, and far enough below the largest int to be counted with. */
constexpr float kOverLarge = 1 << 20;

}  // namespace

void QuillHeifWriter::setThmbSize() {
    mThmbWidth = kThmbWidth;
    const float ratio = static_cast<float>(static_cast<double>(mGeometry.height) / mGeometry.width);
    mThmbHeight = static_cast<int32_t>(std::min(ratio * kThmbWidth, kOverLarge));
    if (mThmbHeight > 0 && mThmbHeight % 2 != 0) ++mThmbHeight;  // even, for the 4:2:0 chroma
}

size_t QuillHeifWriter::thumbnailCapacity() const {
    const ThumbnailSize size{mThmbWidth, mThmbHeight};
    return isJpegSize(size) ? static_cast<size_t>(size.yuvBytes()) : 0;
}

std::unique_ptr<uint8_t[]> QuillHeifWriter::emptyThumbnail() const {
    const size_t bytes = thumbnailCapacity();
    return std::unique_ptr<uint8_t[]>(bytes == 0 ? nullptr : new (std::nothrow) uint8_t[bytes]());
}

int QuillHeifWriter::creatThmb(uint8_t* src, uint8_t* dst) {
    const std::unique_ptr<uint8_t[]> thumbnail = emptyThumbnail();
    if (thumbnail == nullptr) return -1;
    subsamplingYuv(src, thumbnail.get());
    return yuvToJpeg(thumbnail.get(), dst);
}

int QuillHeifWriter::yuvToJpeg(uint8_t* nv12, uint8_t* dst) {
    return compressThumbnail(nv12, {mThmbWidth, mThmbHeight}, dst, thumbnailCapacity());
}

int QuillHeifWriter::saveYuvBuf(uint8_t* frame, uint8_t* nv12) {
    ATRACE_NAME("saveYuvBuf");
    if (mFormat == nullptr) {
        ALOGE("%s: Color fmt not support %d.", __FUNCTION__, mColorFormat);
        return -1;
    }
    if (mFormat->chroma == Chroma::kNone) {
        convertRGBA8888ToNV12(frame, nv12);
    } else if (mFormat->chroma == Chroma::kPlanar) {
        convertYuvI420ToNV12(frame, nv12);
    } else if (mFormat->bitDepth > 8) {
        convertP010ToNV12(frame, nv12);
    } else {  // NV21 is in NV12 order by now: the looper has swapped the pairs in place
        memcpy(nv12, frame, static_cast<size_t>(mFormat->bytes(mGeometry.samples())));
    }
    return 1;
}

void QuillHeifWriter::convertYuvI420ToNV12(uint8_t* src, uint8_t* dst) { convertI420(src, mGeometry, dst); }

void QuillHeifWriter::convertP010ToNV12(uint8_t* src, uint8_t* dst) { convertP010(src, mGeometry, dst); }

void QuillHeifWriter::convertRGBA8888ToNV12(uint8_t* src, uint8_t* dst) { convertRgba8888(src, mGeometry, dst); }

void QuillHeifWriter::subsamplingYuv(uint8_t* src, uint8_t* dst) {
    downscaleNv12(src, mGeometry, {mThmbWidth, mThmbHeight}, dst);
}

int QuillHeifWriter::bilinear(uint8_t* src, int x, int y) { return sampleLuma(src, mGeometry, x, y); }

void QuillHeifWriter::splitYuv(uint8_t* src, uint8_t* dstY, uint8_t* dstU, uint8_t* dstV) {
    splitNv12(src, mThmbWidth * mThmbHeight, dstY, dstU, dstV);
}

}  // namespace android
