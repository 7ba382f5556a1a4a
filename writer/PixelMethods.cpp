#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <string.h>

#include <log/log.h>
#include <media/stagefright/MediaMuxer.h>

#include "Downscale.h"
#include "InputColorFormat.h"
#include "PixelConversion.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

int QuillHeifWriter::saveYuvBuf(uint8_t* frame, uint8_t* nv12) {
    ATRACE_NAME("saveYuvBuf");
    const AllottedArea area{mStride, mSliceHeight};
    switch (mColorFormat) {
        case FORMAT_I420:
            convertI420(frame, area, nv12);
            return 1;
        case FORMAT_P010:
            convertP010(frame, area, nv12);
            return 1;
        case FORMAT_RGBA8888:
            convertRGBA8888ToNV12(frame, nv12);
            return 1;
        case FORMAT_NV12:
        case FORMAT_NV21:  // in NV12 order by now: the looper has swapped the pairs in place
            memcpy(nv12, frame, static_cast<size_t>(area.yuvBytes()));
            return 1;
        default:
            ALOGE("%s: Color fmt not support %d.", __FUNCTION__, mColorFormat);
            return -1;
    }
}

void QuillHeifWriter::convertYuvI420ToNV12(uint8_t* src, uint8_t* dst) {
    convertI420(src, {mStride, mSliceHeight}, dst);
}

void QuillHeifWriter::convertP010ToNV12(uint8_t* src, uint8_t* dst) { convertP010(src, {mStride, mSliceHeight}, dst); }

void QuillHeifWriter::convertRGBA8888ToNV12(uint8_t* src, uint8_t* dst) {
    convertRgba8888(src, {mStride, mSliceHeight}, dst);
}

void QuillHeifWriter::subsamplingYuv(uint8_t* src, uint8_t* dst) {
    downscaleNv12({src, mWidth, mHeight, mStride, mSliceHeight}, {mThmbWidth, mThmbHeight}, dst);
}

int QuillHeifWriter::bilinear(uint8_t* src, int x, int y) {
    return sampleLuma({src, mWidth, mHeight, mStride, mSliceHeight}, x, y);
}

void QuillHeifWriter::splitYuv(uint8_t* src, uint8_t* dstY, uint8_t* dstU, uint8_t* dstV) {
    splitNv12(src, mThmbWidth * mThmbHeight, dstY, dstU, dstV);
}

}  // namespace android
