#define LOG_TAG "QuillHeifEncoder"

#include <string.h>

#include <memory>

#include <log/log.h>

#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "TileLayout.h"
#include "VerboseLog.h"

namespace android {

namespace {

constexpr size_t kBytesP010 = 2;  // bytes a sample

/** Copies `rows` rows of `rowBytes` bytes between two pitches. */
void copyRows(uint8_t* dst, size_t dstPitch, const uint8_t* src, size_t srcPitch, size_t rowBytes, size_t rows) {
    for (size_t row = 0; row < rows; ++row) memcpy(dst + row * dstPitch, src + row * srcPitch, rowBytes);
}

/** One whole tile of a semi-planar frame whose chroma plane follows `height` luma rows directly. */
void copyWholeTile(uint8_t* dst, const uint8_t* frame, size_t width, size_t height, size_t tileRow, size_t tileColumn,
                   size_t sampleBytes) {
    constexpr size_t kSide = kTileSide;
    const size_t pitch = width * sampleBytes;
    const size_t tilePitch = kSide * sampleBytes;
    const uint8_t* const luma = frame + kSide * tileRow * pitch + tileColumn * tilePitch;
    const uint8_t* const chroma = frame + (height + kSide / 2 * tileRow) * pitch + tileColumn * tilePitch;
    copyRows(dst, tilePitch, luma, pitch, tilePitch, kSide);
    copyRows(dst + kSide * tilePitch, tilePitch, chroma, pitch, tilePitch, kSide / 2);
}

/** Calls `tile(row, column, number)` for each whole tile of a frame, row by row. */
template <typename TileFunction>
void forEachWholeTile(int width, int height, TileFunction tile) {
    size_t number = 0;
    for (int row = 0; row < height / kTileSide; ++row) {
        for (int column = 0; column < width / kTileSide; ++column) {
            tile(static_cast<size_t>(row), static_cast<size_t>(column), number++);
        }
    }
}

}  // namespace

void QuillHeifEncoder::splitYuvData(uint8_t* frame, int width, int height, uint8_t* dst) {
    if (isVerboseLogEnabled()) ALOGD("%s enter", __FUNCTION__);
    forEachWholeTile(width, height, [&](size_t row, size_t column, size_t number) {
        copyWholeTile(dst + kTileBytesYuv8 * number, frame, width, height, row, column, 1);
    });
    if (isVerboseLogEnabled()) ALOGD("%s end", __FUNCTION__);
}

// Its two lines and the "leave" line below follow the stricter verbosity rule at the verbose level: these routines
// serve tools, whose users ask for the lines, not every photo.
void QuillHeifEncoder::split10BitYuvData(uint8_t* frame, int width, int height, uint8_t* dst) {
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s enter", __FUNCTION__);
    const std::unique_ptr<uint8_t[]> tile(new uint8_t[kTileBytesP010]);
    forEachWholeTile(width, height, [&](size_t row, size_t column, size_t number) {
        copyWholeTile(tile.get(), frame, width, height, row, column, kBytesP010);
        memcpy(dst + kTileBytesP010 * number, tile.get(), kTileBytesP010);
    });
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s end", __FUNCTION__);
}

uint8_t* QuillHeifEncoder::bufferAlign(uint8_t* frame, int width, int height, int alignedWidth, int alignedHeight,
                                       uint8_t* dst) {
    if (isVerboseLogEnabled()) ALOGI("align %d*%d to %d*%d", width, height, alignedWidth, alignedHeight);
    if (height >= 1) {
        const size_t pitch = kBytesP010 * width;
        const size_t alignedPitch = kBytesP010 * alignedWidth;
        copyRows(dst, alignedPitch, frame, pitch, pitch, height);
        copyRows(dst + alignedPitch * alignedHeight, alignedPitch, frame + pitch * height, pitch, pitch, height / 2);
    }
    if (isTilingTraceLogEnabled()) __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, "%s leave", __FUNCTION__);
    return dst;
}

}  // namespace android
