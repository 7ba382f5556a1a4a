#define LOG_TAG "QuillHeifEncoder"

#include "QuillHeifEncoder.h"

#include <log/log.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "StatusNames.h"
#include "SystemProperties.h"

namespace android {

namespace {

/** Cuts a semi-planar frame of pitch `width` into whole tiles, one behind the other. */
void copyWholeTiles(int32_t colorFormat, const uint8_t* frame, int width, int height, uint8_t* dst) {
    const FrameFormat& format = *findFrameFormat(colorFormat);
    const FrameGeometry geometry{width, height, width, height};
    for (int32_t row = 0; row < height / kTileSide; ++row) {
        for (int32_t column = 0; column < width / kTileSide; ++column, dst += tileBytes(format)) {
            copyTile(dst, frame, tileCopies(format, geometry, {row, column, kTileSide, kTileSide}));
        }
    }
}

}  // namespace

QuillHeifEncoder::QuillHeifEncoder(int width, int height, int stride, int sliceHeight, int colorFormat, int quality)
        : mGeometry{width, height, stride, sliceHeight},
          mColorFormat(colorFormat),
          mFormat(findFrameFormat(colorFormat)),
          mQuality(quality),
          mCodecColorFormat(kCodecSemiPlanar) {
    if (isVerboseLogEnabled()) {
        ALOGI("width: %d, height: %d, stride: %d X %d fmt: %d quality: %d", width, height, stride, sliceHeight,
              colorFormat, quality);
    }
}

// Neither stops nor releases the codec: `close` has done so, on the thread that owns the frame.
QuillHeifEncoder::~QuillHeifEncoder() {
    mSurface.clear();
    mNativeWindow.clear();
    mOutputFormat.clear();
    mCodecLooper.clear();
    mCodec.clear();
}

status_t QuillHeifEncoder::start() {
    const status_t err = mCodec == nullptr ? NO_INIT : mCodec->start();
    if (err != OK) ALOGE("Failed to start codec: %s (%d)", statusText(err), err);
    return err;
}

// The members stay until destruction: another thread may still be in `addYuvBuffer`. A codec that cannot be stopped is
// released all the same.
void QuillHeifEncoder::close() {
    if (mCodec != nullptr) {
        mCodec->stop();
        mCodec->release();
    }
    if (mCodecLooper != nullptr) mCodecLooper->stop();
}

sp<AMessage> QuillHeifEncoder::getFormat() {
    if (mOutputFormat == nullptr) return nullptr;
    AString mime;
    if (mOutputFormat->findString(KEY_MIME, &mime) && !mime.startsWith("image/")) {
        mOutputFormat->setString(KEY_MIME, MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC);
        if (mUseGrid) setGridKeys(mOutputFormat);
    }
    mOutputFormat->setInt32(KEY_WIDTH, mGeometry.width);
    mOutputFormat->setInt32(KEY_HEIGHT, mGeometry.height);
    return mOutputFormat;
}

int64_t QuillHeifEncoder::computePresentationTime(int k) const {
    constexpr int64_t kMicrosecondsPerFrame = 1000000;
    constexpr int64_t kOffsetUs = 132;  // of every tile's time; part of the interface
    return mFrameIndex * kMicrosecondsPerFrame + k * kMicrosecondsPerFrame / mNumTiles + kOffsetUs;
}

void QuillHeifEncoder::splitYuvData(uint8_t* frame, int width, int height, uint8_t* dst) {
    if (isVerboseLogEnabled()) ALOGD("%s enter", __FUNCTION__);
    copyWholeTiles(FORMAT_NV12, frame, width, height, dst);
    if (isVerboseLogEnabled()) ALOGD("%s end", __FUNCTION__);
}

// Its two lines and the "leave" line below follow the stricter verbosity rule at the verbose level: these routines
// serve tools, whose users ask for the lines, not every photo.
void QuillHeifEncoder::split10BitYuvData(uint8_t* frame, int width, int height, uint8_t* dst) {
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s enter", __FUNCTION__);
    copyWholeTiles(FORMAT_P010, frame, width, height, dst);
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s end", __FUNCTION__);
}

uint8_t* QuillHeifEncoder::bufferAlign(uint8_t* frame, int width, int height, int alignedWidth, int alignedHeight,
                                       uint8_t* dst) {
    if (isVerboseLogEnabled()) ALOGI("align %d*%d to %d*%d", width, height, alignedWidth, alignedHeight);
    const int64_t pitch = int64_t{2} * width, alignedPitch = int64_t{2} * alignedWidth;
    copyTile(dst, frame,
             {{{0, 2 * pitch, 0, alignedPitch, pitch, height},
               {pitch * height, 2 * pitch, alignedPitch * alignedHeight, alignedPitch, pitch, height / 2}},
              2});
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s leave", __FUNCTION__);
    return dst;
}

}  // namespace android
