#define LOG_TAG "QuillHeifEncoder"

#include <string.h>

#include <log/log.h>
#include <media/MediaCodecBuffer.h>
#include <ui/GraphicBuffer.h>

#include "QuillHeifEncoder.h"
#include "StatusNames.h"

namespace android {

namespace {

constexpr size_t kOutputRetries = 1500;  // empty waits in one frame, about 15 s in all
constexpr uint32_t kSoftwareWrite = GraphicBuffer::USAGE_SW_WRITE_OFTEN;
constexpr int kNoFence = -1;

}  // namespace

status_t QuillHeifEncoder::addYuvBuffer(uint8_t* frame, std::vector<sp<ABuffer>>& out) {
    const status_t err = encodeFrame(frame, out);
    // At error level even for a success: the level is part of the interface.
    ALOGE("encode heif (err %d(%s))", err, statusName(err));
    ++mFrameIndex;
    releaseSurface();
    return err;
}

status_t QuillHeifEncoder::encodeFrame(uint8_t* frame, std::vector<sp<ABuffer>>& out) {
    Draining draining{kOutputRetries, kNewsWithoutTile, 0};
    do {
        status_t err = mFrameLease->isRevoked() ? TIMED_OUT : queueInputData(frame, draining.retriesLeft);
        if (err == OK) err = drainOutput(&draining, out);
        if (err != OK) return err;
    } while (draining.collected != mNumOutputs);
    return OK;
}

status_t QuillHeifEncoder::queueInputData(uint8_t* frame, size_t retriesLeft) {
    return usesSurfacePath() ? queueInputDataToSurface(frame) : queueInputDataToByteBuffer(frame, retriesLeft);
}

status_t QuillHeifEncoder::queueInputDataToByteBuffer(uint8_t* frame, size_t retriesLeft) {
    status_t queued = OK;
    size_t index = 0;
    while (mInputTileIndex != mNumTiles) {
        const status_t dequeued = mCodec->dequeueInputBuffer(&index, 0 /* timeoutUs */);
        // No buffer free: drain first, then come back. Without retries left there is no coming back, and the
        // buffer used last is taken once more.
        if (retriesLeft != 0 && dequeued != OK) return OK;

        sp<MediaCodecBuffer> buffer;
        const status_t filled = fillCodecBuffer(index, frame, &buffer);
        if (filled != OK) return filled;

        queued = mCodec->queueInputBuffer(index, buffer->offset(), buffer->size(),
                                          computePresentationTime(mInputTileIndex), 0 /* flags */);
        ++mInputTileIndex;
    }
    return queued;
}

status_t QuillHeifEncoder::fillCodecBuffer(size_t index, uint8_t* frame, sp<MediaCodecBuffer>* buffer) {
    const status_t err = mCodec->getInputBuffer(index, buffer);
    if (err != OK) {
        ALOGE("failed to get input buffer %zu", index);
        return err;
    }
    const size_t tileBytes = static_cast<size_t>(mInputBufferSize);
    if (*buffer != nullptr && tileBytes > (*buffer)->capacity()) {
        ALOGE("buffer size (%zu) too large for codec input size (%zu)", tileBytes, (*buffer)->capacity());
        return BAD_VALUE;
    }
    if (*buffer != nullptr) (*buffer)->setRange(0, tileBytes);
    uint8_t* const data = *buffer == nullptr ? nullptr : (*buffer)->data();
    if (data == nullptr) {
        ALOGE("dstBuf is nullptr");
        return BAD_VALUE;
    }
    const Loan loan(*mFrameLease);
    if (!loan) return TIMED_OUT;
    clearEdgeTile(data, tileBytes);
    fillInputBuffer(data, frame, mInputTileIndex, static_cast<int>(tileBytes));
    return OK;
}

// Buffers come back with the tile that they carried last. Beside the part that an edge tile fills it would cost bits to
// code, and readers that do not crop would show it.
void QuillHeifEncoder::clearEdgeTile(uint8_t* buffer, size_t bytes) const {
    const TileArea tile = tileArea(mGeometry, mInputTileIndex);
    if (tile.width < kTileSide || tile.rows < kTileSide) memset(buffer, 0, bytes);
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
    err = fillSurfaceBuffer(windowBuffer, frame);
    if (err != OK) {
        mNativeWindow->cancelBuffer(mNativeWindow.get(), windowBuffer, kNoFence);
        return err;
    }
    ++mInputTileIndex;
    mNativeWindow->queueBuffer(mNativeWindow.get(), windowBuffer, kNoFence);
    return OK;
}

// A tile is copied to the buffer's own pitch, and repeats the picture's edge: codecs mix the colors of neighbouring
// pixels.
status_t QuillHeifEncoder::fillSurfaceBuffer(ANativeWindowBuffer* windowBuffer, const uint8_t* frame) {
    const sp<GraphicBuffer> buffer = GraphicBuffer::from(windowBuffer);
    void* address = nullptr;
    status_t err = buffer->lock(kSoftwareWrite, &address);
    if (err == OK && address == nullptr) err = NO_MEMORY;
    if (err != OK) {
        ALOGE("surface buffer cannot be locked: %s (%d)", statusText(err), err);
        return err;
    }
    if (const Loan loan(*mFrameLease); loan) {
        fillSurfaceTile(static_cast<uint8_t*>(address), frame, *mFormat, mGeometry, mInputTileIndex,
                        {windowBuffer->stride, windowBuffer->height});
    } else {
        err = TIMED_OUT;
    }
    // What is not unlocked may not have reached the codec's memory.
    const status_t unlocked = buffer->unlock();
    if (unlocked != OK) ALOGE("surface buffer cannot be unlocked: %s (%d)", statusText(unlocked), unlocked);
    return err == OK ? unlocked : err;
}

int QuillHeifEncoder::fillInputBuffer(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    if (mFormat == nullptr) {
        ALOGE("%s: Color fmt not support %d.", __FUNCTION__, mColorFormat);
    } else {
        copyTileOf(*mFormat, dst, frame, tileIndex, dstStride);
    }
    return 0;
}

void QuillHeifEncoder::copyTileOf(const FrameFormat& format, uint8_t* dst, uint8_t* frame, int tileIndex,
                                  int dstStride) const {
    const bool ownStride = format.chroma == Chroma::kNone;
    const TileBuffer buffer{ownStride ? dstStride : kCodecBuffer.stride, kCodecBuffer.rows};
    copyTile(dst, frame, tileCopies(format, mGeometry, tileArea(mGeometry, tileIndex), buffer));
}

void QuillHeifEncoder::splitYuv8BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    copyTileOf(*findFrameFormat(FORMAT_NV12), dst, frame, tileIndex, dstStride);
}

void QuillHeifEncoder::splitYuvI4208BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    copyTileOf(*findFrameFormat(FORMAT_I420), dst, frame, tileIndex, dstStride);
}

void QuillHeifEncoder::splitP010Data(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    copyTileOf(*findFrameFormat(FORMAT_P010), dst, frame, tileIndex, dstStride);
}

void QuillHeifEncoder::splitRGBA8888Data(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    copyTileOf(*findFrameFormat(FORMAT_RGBA8888), dst, frame, tileIndex, dstStride);
}

}  // namespace android
