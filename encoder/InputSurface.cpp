#define LOG_TAG "QuillHeifEncoder"

#include <string.h>
#include <strings.h>

#include <android/native_window.h>
#include <cutils/properties.h>
#include <gui/IGraphicBufferProducer.h>
#include <log/log.h>
#include <system/graphics.h>
#include <ui/GraphicBuffer.h>

#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "StatusNames.h"
#include "TileLayout.h"
#include "VendorFormats.h"
#include "VerboseLog.h"

namespace android {

namespace {

constexpr uint32_t kSoftwareWrite = GraphicBuffer::USAGE_SW_WRITE_OFTEN;
constexpr uint64_t kWindowUsage = GraphicBuffer::USAGE_SW_READ_OFTEN | GraphicBuffer::USAGE_SW_WRITE_OFTEN;
constexpr int kNoFence = -1;
/** One producer fills tile after tile: let it run this many buffers ahead of the codec. */
constexpr int kBuffersAhead = 32;

bool isSm8350() {
    char model[PROPERTY_VALUE_MAX] = {};
    property_get("ro.soc.model", model, "unknown");
    return strncasecmp(model, "SM8350", 6) == 0;
}

}  // namespace

void QuillHeifEncoder::createSurfaceForEncoder() {
    if (isVerboseLogEnabled()) ALOGI("Creating input surface for encode.");
    const int32_t pixelFormat = surfacePixelFormat();

    sp<IGraphicBufferProducer> producer;
    const status_t created = mCodec->createInputSurface(&producer);
    if (created != OK || producer == nullptr) return;  // the first frame then finds no window and fails
    mSurface = new Surface(producer, true /* controlledByApp */);
    mNativeWindow = mSurface;

    ANativeWindow_setBuffersGeometry(mNativeWindow.get(), kTileSide, kTileSide, pixelFormat);
    status_t err = native_window_set_usage(mNativeWindow.get(), kWindowUsage);
    if (err != OK) {
        ALOGE("native_window_set_usage failed: %s (%d)", statusText(err), negated(err));
        return;
    }
    mSurface->setMaxDequeuedBufferCount(kBuffersAhead);
    err = native_window_api_connect(mNativeWindow.get(), NATIVE_WINDOW_API_CPU);
    // "connect from" is the wording that log filters in the field look for.
    if (err != OK) ALOGE("Failed to connect from surface, err %d", err);
}

int32_t QuillHeifEncoder::surfacePixelFormat() const {
    if (mColorFormat == FORMAT_P010 && mIsVendorHevc) {
        // This one chip's encoder takes its own P010 layout from a surface; all others take the platform's.
        const int32_t format = isSm8350() ? kVendorP010SemiPlanar : static_cast<int32_t>(HAL_PIXEL_FORMAT_YCBCR_P010);
        if (isVerboseLogEnabled()) ALOGI("Surface color-format: %d", format);
        return format;
    }
    return mColorFormat == FORMAT_RGBA8888 ? static_cast<int32_t>(HAL_PIXEL_FORMAT_RGBA_8888) : kVendorP010SemiPlanar;
}

size_t QuillHeifEncoder::surfaceTileBytes(int32_t stride) const {
    return static_cast<size_t>(mInputBufferSize) / kTileSide * static_cast<size_t>(stride);
}

status_t QuillHeifEncoder::queueInputDataToSurface(uint8_t* frame) {
    if (mInputTileIndex == mNumTiles) return OK;

    ANativeWindowBuffer* windowBuffer = nullptr;
    status_t err = mNativeWindow == nullptr ? NO_INIT
                                            : native_window_dequeue_buffer_and_wait(mNativeWindow.get(), &windowBuffer);
    if (err == OK && windowBuffer == nullptr) err = NO_MEMORY;
    if (err != OK) {
        ALOGE("Surface::dequeueBuffer returned error %d", err);
        return -1;
    }
    if (windowBuffer->width < kTileSide || windowBuffer->height < kTileSide) {
        ALOGE("surface buffer of %d x %d is too small for a tile", windowBuffer->width, windowBuffer->height);
        mNativeWindow->cancelBuffer(mNativeWindow.get(), windowBuffer, kNoFence);
        return BAD_VALUE;
    }
    const sp<GraphicBuffer> buffer = GraphicBuffer::from(windowBuffer);
    void* address = nullptr;
    buffer->lock(kSoftwareWrite, &address);
    if (address != nullptr) {
        clearEdgeTile(address, mInputTileIndex, surfaceTileBytes(windowBuffer->stride));
        fillInputBuffer(static_cast<uint8_t*>(address), frame, mInputTileIndex, windowBuffer->stride);
    }
    ++mInputTileIndex;
    buffer->unlock();
    mNativeWindow->queueBuffer(mNativeWindow.get(), windowBuffer, kNoFence);
    return OK;
}

void QuillHeifEncoder::releaseSurface() {
    if (!usesSurfacePath() || mNativeWindow == nullptr) return;
    const status_t err = native_window_api_disconnect(mNativeWindow.get(), NATIVE_WINDOW_API_CPU);
    if (err != OK) ALOGE("Failed to disconnect from surface, err %d", err);
}

}  // namespace android
