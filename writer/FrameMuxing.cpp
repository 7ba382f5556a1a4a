#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <stdlib.h>

#include <log/log.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaMuxer.h>

#include "ChromaOrder.h"
#include "InputColorFormat.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

namespace {

constexpr char kKeyBitDepth[] = "BitDepth";
constexpr int32_t kP010BitDepth = 10;

}  // namespace

void QuillHeifWriter::addYuvBuffer(uint8_t* yuv) {
    ATRACE_NAME("addYuvBuffer");
    if (mColorFormat == FORMAT_NV21) swapNv21Chroma(yuv);
    mInputConsumed.store(true, std::memory_order_release);

    std::vector<sp<ABuffer>> buffers;
    if (mEncoder->addYuvBuffer(yuv, buffers) != OK) {
        ALOGE("Encoder failed!");
        return;
    }
    ALOGD("encoded output buffers size, %zu", buffers.size());
    if (mOutputFormat == nullptr) mOutputFormat = mEncoder->getFormat();
    startMuxer(mOutputFormat);
    onOutputBufferReceived(buffers);
}

void QuillHeifWriter::swapNv21Chroma(uint8_t* yuv) {
    ALOGD("[NV21 to NV12]width: %d, height: %d, stride: %d X %d,start!!!", mWidth, mHeight, mStride, mSliceHeight);
    if (yuv == nullptr) {
        ALOGE("Input Buffer is NULL!");
        return;
    }
    const int64_t lumaBytes = int64_t{mStride} * mSliceHeight;
    swapChromaPairs({yuv + lumaBytes, mWidth, mHeight, mStride, lumaBytes / 2});
    ALOGD("[NV21 to NV12] END!!!");
}

void QuillHeifWriter::startMuxer(const sp<AMessage>& format) {
    delete[] mTrackIndices;
    mTrackIndices = new int32_t[mImageCount]();
    if (mMuxer == nullptr || format == nullptr) return;

    if (mRotation >= 1) {
        ALOGD("setting rotation: %d", mRotation);
        mMuxer->setOrientationHint(mRotation);
    }
    if (mColorFormat == FORMAT_P010) format->setInt32(kKeyBitDepth, kP010BitDepth);
    for (int32_t i = 0; i < mImageCount; ++i) {
        format->setInt32(KEY_IS_DEFAULT, 1);
        mTrackIndices[i] = static_cast<int32_t>(mMuxer->addTrack(format));
    }
    if (mMuxer->start() != OK) {
        ALOGE("!!! Muxer start error, please check file access permision");
        return;
    }
    mMuxerStarted = true;
    processExifData();
}

void QuillHeifWriter::onOutputBufferReceived(const std::vector<sp<ABuffer>>& buffers) {
    ATRACE_NAME("onOutputBufferReceived");
    if (mMuxer == nullptr) return;
    ALOGD("muxer image item begin!");
    for (size_t i = 0; i < buffers.size(); ++i) {
        const size_t image = mTileCount == 0 ? 0 : i / static_cast<size_t>(mTileCount);
        mMuxer->writeSampleData(buffers[i], static_cast<size_t>(mTrackIndices[image]), 0 /* timeUs */,
                                MediaCodec::BUFFER_FLAG_SYNCFRAME);
    }
    ALOGD("muxer image item end! size %d", static_cast<int>(buffers.size()));
}

// Takes the last frame queued: with one frame in flight it is the one just written.
void QuillHeifWriter::clearTopInputFrameExifData() {
    if (mInputFrames.empty()) return;
    InputFrame& frame = mInputFrames.editItemAt(mInputFrames.size() - 1);
    free(frame.exifData);
    frame.exifData = nullptr;
}

}  // namespace android
