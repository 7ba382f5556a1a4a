#define LOG_TAG "QuillHeifEncoder"

#include "QuillHeifEncoder.h"
#include "StatusNames.h"

#include <string.h>

#include <log/log.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "VerboseLog.h"

namespace android {

QuillHeifEncoder::QuillHeifEncoder(int width, int height, int stride, int verticalStride, int colorFormat, int quality)
        : mWidth(width),
          mHeight(height),
          mStride(stride),
          mVStride(verticalStride),
          mColorFormat(colorFormat),
          mQuality(quality),
          mCodecColorFormat(COLOR_FormatYUV420SemiPlanar) {
    if (isVerboseLogEnabled()) {
        ALOGI("width: %d, height: %d, stride: %d X %d fmt: %d quality: %d", mWidth, mHeight, mStride, mVStride,
              mColorFormat, mQuality);
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

void QuillHeifEncoder::close() {
    if (mCodec != nullptr) {
        mCodec->stop();
        mCodec->release();
        mCodec.clear();
    }
    if (mCodecLooper != nullptr) {
        mCodecLooper->stop();
        mCodecLooper.clear();
    }
    mOutputFormat.clear();
}

// A stopped codec refuses every call and lets go of whoever waits for a buffer; the members stay as they are, because
// the other thread still reads them.
void QuillHeifEncoder::interrupt() {
    if (mCodec != nullptr) mCodec->stop();
}

sp<AMessage> QuillHeifEncoder::getFormat() {
    if (mOutputFormat == nullptr) return nullptr;
    AString mime;
    if (mOutputFormat->findString(KEY_MIME, &mime) && !mime.startsWith("image/")) {
        mOutputFormat->setString(KEY_MIME, MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC);
        if (mUseGrid) setGridKeys(mOutputFormat);
    }
    mOutputFormat->setInt32(KEY_WIDTH, mWidth);
    mOutputFormat->setInt32(KEY_HEIGHT, mHeight);
    return mOutputFormat;
}

int64_t QuillHeifEncoder::computePresentationTime(int k) const {
    constexpr int64_t kMicrosecondsPerFrame = 1000000;
    // Codecs that take a time of 0 for "unset" would reorder the first tile, so every time lies a little later.
    constexpr int64_t kOffsetUs = 132;
    return mFrameIndex * kMicrosecondsPerFrame + k * kMicrosecondsPerFrame / mNumTiles + kOffsetUs;
}

}  // namespace android
