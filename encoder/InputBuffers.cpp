#define LOG_TAG "QuillHeifEncoder"

#include <string.h>

#include <log/log.h>
#include <media/MediaCodecBuffer.h>

#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "TileLayout.h"

namespace android {

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
    if (*buffer == nullptr) {
        ALOGE("dstBuf is nullptr");
        return BAD_VALUE;
    }
    if (tileBytes > (*buffer)->capacity()) {
        ALOGE("buffer size (%zu) too large for codec input size (%zu)", tileBytes, (*buffer)->capacity());
        return BAD_VALUE;
    }
    (*buffer)->setRange(0, tileBytes);
    uint8_t* const data = (*buffer)->data();
    if (data == nullptr) {
        ALOGE("dstBuf is nullptr");
        return BAD_VALUE;
    }
    clearEdgeTile(data, mInputTileIndex, tileBytes);
    fillInputBuffer(data, frame, mInputTileIndex, static_cast<int>(tileBytes));
    return OK;
}

// Buffers come back with the tile they carried last. Beside the part that an edge tile fills, that would cost bits to
// code and leave a piece of the picture where only a careless reader sees it.
void QuillHeifEncoder::clearEdgeTile(void* buffer, int tileIndex, size_t bytes) const {
    const TileArea tile = tileArea({mWidth, mStride, mVStride}, tileIndex);
    if (tile.width < kTileSide || tile.rows < kTileSide) memset(buffer, 0, bytes);
}

int QuillHeifEncoder::fillInputBuffer(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    switch (mColorFormat) {
        case FORMAT_I420:
            splitYuvI4208BitData(dst, frame, tileIndex, dstStride);
            break;
        case FORMAT_P010:
            splitP010Data(dst, frame, tileIndex, dstStride);
            break;
        case FORMAT_RGBA8888:
            splitRGBA8888Data(dst, frame, tileIndex, dstStride);
            break;
        case FORMAT_NV12:
        case FORMAT_NV21:
            splitYuv8BitData(dst, frame, tileIndex, dstStride);
            break;
        default:
            ALOGE("%s: Color fmt not support %d.", __FUNCTION__, mColorFormat);
            break;
    }
    return 0;
}

void QuillHeifEncoder::splitYuv8BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int /* dstStride */) {
    const FrameGeometry geometry{mWidth, mStride, mVStride};
    copyTile(dst, frame, nv12TileCopies(geometry, tileArea(geometry, tileIndex)));
}

void QuillHeifEncoder::splitYuvI4208BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int /* dstStride */) {
    const FrameGeometry geometry{mWidth, mStride, mVStride};
    copyTile(dst, frame, i420TileCopies(geometry, tileArea(geometry, tileIndex)));
}

void QuillHeifEncoder::splitP010Data(uint8_t* dst, uint8_t* frame, int tileIndex, int /* dstStride */) {
    const FrameGeometry geometry{mWidth, mStride, mVStride};
    copyTile(dst, frame, p010TileCopies(geometry, tileArea(geometry, tileIndex)));
}

void QuillHeifEncoder::splitRGBA8888Data(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) {
    const FrameGeometry geometry{mWidth, mStride, mVStride};
    copyTile(dst, frame, rgbaTileCopies(geometry, tileArea(geometry, tileIndex), dstStride));
}

}  // namespace android
