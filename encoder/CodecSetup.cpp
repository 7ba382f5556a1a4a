#define LOG_TAG "QuillHeifEncoder"

#include <stdint.h>
#include <string.h>

#include <algorithm>

#include <android/native_window.h>
#include <gui/IGraphicBufferProducer.h>
#include <log/log.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/foundation/MediaDefs.h>
#include <mediadrm/ICrypto.h>
#include <system/graphics.h>
#include <ui/GraphicBuffer.h>
#include <utils/ThreadDefs.h>

#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "StatusNames.h"
#include "SystemProperties.h"

namespace android {

namespace {

constexpr char kCodecLooperName[] = "QuillHeifEncoder-MediaCodecLooper";

constexpr char kQtiComponent[] = "c2.qti.hevc.encoder";
constexpr char kMtkComponent[] = "c2.mtk.hevc.encoder";

constexpr int32_t kFrameRate = 30;
constexpr int32_t kFullSpeed = INT32_MAX;  // "operating-rate": as fast as the codec can
constexpr int32_t kMtkBitrateFloor = 40000000;
constexpr int32_t kHevcProfileMain10 = 2;

// The platform's numbers for BT.601 (625 lines) and for the sRGB-like transfer of stills.
constexpr int32_t kColorStandard = COLOR_STANDARD_BT601_PAL;
constexpr int32_t kColorTransfer = 2;

constexpr uint64_t kWindowUsage = GraphicBuffer::USAGE_SW_READ_OFTEN | GraphicBuffer::USAGE_SW_WRITE_OFTEN;
/** One producer fills tile after tile: let it run this many buffers ahead of the codec. */
constexpr int kBuffersAhead = 32;

/** Both the creation of the codec and the size query ask this one instance. */
const camera3::HeicEncoderInfoManager& encoderInfo() {
    static const camera3::HeicEncoderInfoManager& manager = camera3::HeicEncoderInfoManager::getInstance();
    return manager;
}

template <size_t kSize>
bool startsWith(const AString& text, const char (&prefix)[kSize]) {
    return strncmp(text.c_str(), prefix, kSize - 1) == 0;
}

static_assert(kCodecPlanar == COLOR_FormatYUV420Planar && kCodecSemiPlanar == COLOR_FormatYUV420SemiPlanar &&
              kCodecSurface == COLOR_FormatSurface);

}  // namespace

bool QuillHeifEncoder::isSizeSupportedByHeifEncoder(int width, int height, bool* useGrid, AString* hevcName) {
    return encoderInfo().isSizeSupported(width, height, useGrid, hevcName);
}

status_t QuillHeifEncoder::initializeCodec() {
    status_t err = createCodec();
    if (err != OK) {
        ALOGE("Failed to create codec: %s (%d)", statusText(err), err);
        return NO_INIT;
    }
    layOutTiles();
    const sp<AMessage> format = makeCodecFormat();
    setParameter(format);
    err = mCodec->configure(format, nullptr, nullptr, MediaCodec::CONFIGURE_FLAG_ENCODE);
    if (err != OK) {
        ALOGE("Failed to configure codec: %s (%d)", statusText(err), err);
        return err;
    }
    if (usesSurfacePath()) createSurfaceForEncoder();
    return OK;
}

status_t QuillHeifEncoder::createCodec() {
    AString hevcName;
    if (!encoderInfo().isSizeSupported(mGeometry.width, mGeometry.height, &mUseGrid, &hevcName)) {
        ALOGE("%s: Encoder doesnt' support size %d x %d!", __FUNCTION__, mGeometry.width, mGeometry.height);
        return BAD_VALUE;
    }
    mCodecLooper = new ALooper;
    mCodecLooper->setName(kCodecLooperName);
    const status_t err = mCodecLooper->start(false /* runOnCallingThread */, false /* canCallJava */, PRIORITY_AUDIO);
    if (err != OK) {
        ALOGE("%s: Failed to start codec looper: %s (%d)", __FUNCTION__, statusText(err), err);
        return NO_INIT;
    }
    if (isVerboseLogEnabled()) ALOGI("%s Create HEVC Codec", __FUNCTION__);
    mCodec = createCodecComponent(hevcName);
    if (mCodec == nullptr) {
        // Names the type that the caller asked for, although the codec behind it is an HEVC encoder.
        ALOGE("%s: Failed to create codec for %s", __FUNCTION__, MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC);
        return NO_INIT;
    }
    recogniseVendor();
    return OK;
}

sp<MediaCodec> QuillHeifEncoder::createCodecComponent(const AString& hevcName) {
    if (!hevcName.empty()) {
        mBitrateMode = kConstantQuality;
        return MediaCodec::CreateByComponentName(mCodecLooper, hevcName);
    }
    mBitrateMode = kConstantBitrate;
    return MediaCodec::CreateByType(mCodecLooper, MEDIA_MIMETYPE_VIDEO_HEVC, true /* encoder */);
}

void QuillHeifEncoder::recogniseVendor() {
    AString name;
    mCodec->getName(&name);
    if (startsWith(name, kQtiComponent)) mIsVendorHevc = true;
    if (startsWith(name, kMtkComponent)) mIsVendorHevc = mIsMtkHevc = true;
    if (isVerboseLogEnabled()) ALOGI("Codec name:%s", name.c_str());
}

void QuillHeifEncoder::layOutTiles() {
    mTileWidth = mUseGrid ? kTileSide : mGeometry.width;
    mTileHeight = mUseGrid ? kTileSide : mGeometry.height;
    mGridCols = mUseGrid ? (mGeometry.width + kTileSide - 1) / kTileSide : 1;
    mGridRows = mUseGrid ? (mGeometry.height + kTileSide - 1) / kTileSide : 1;
    mNumOutputs = mNumTiles = mGridRows * mGridCols;
}

sp<AMessage> QuillHeifEncoder::makeCodecFormat() const {
    const sp<AMessage> format = new AMessage;
    format->setString(KEY_MIME, MEDIA_MIMETYPE_VIDEO_HEVC);
    format->setInt32(KEY_WIDTH, mTileWidth);
    format->setInt32(KEY_HEIGHT, mTileHeight);
    if (mUseGrid) setGridKeys(format);
    return format;
}

void QuillHeifEncoder::setGridKeys(const sp<AMessage>& format) const {
    format->setInt32(KEY_TILE_WIDTH, mTileWidth);
    format->setInt32(KEY_TILE_HEIGHT, mTileHeight);
    format->setInt32(KEY_GRID_COLUMNS, mGridCols);
    format->setInt32(KEY_GRID_ROWS, mGridRows);
}

void QuillHeifEncoder::setParameter(const sp<AMessage>& format) {
    getEncodeColorFormat();
    format->setInt32(KEY_I_FRAME_INTERVAL, 0);  // every coded picture is a sync picture
    format->setInt32(KEY_COLOR_FORMAT, mCodecColorFormat);
    format->setInt32(KEY_COLOR_STANDARD, kColorStandard);
    format->setInt32(KEY_COLOR_RANGE, COLOR_RANGE_FULL);
    format->setInt32(KEY_COLOR_TRANSFER, kColorTransfer);
    format->setInt32(KEY_FRAME_RATE, kFrameRate);
    setRateParameters(format);
}

void QuillHeifEncoder::setRateParameters(const sp<AMessage>& format) const {
    if (mIsMtkHevc) {
        format->setInt32(KEY_OPERATING_RATE, kFrameRate);
        format->setInt32(KEY_BITRATE_MODE, BITRATE_MODE_CBR);
        const int32_t bitrate = computeBitrate();
        format->setInt32(KEY_BIT_RATE, bitrate > kMtkBitrateFloor ? bitrate : kMtkBitrateFloor);
        return;
    }
    format->setInt32(KEY_CAPTURE_RATE, kFrameRate * mNumTiles);
    format->setInt32(KEY_OPERATING_RATE, kFullSpeed);
    if (mBitrateMode == kConstantBitrate) {
        format->setInt32(KEY_BITRATE_MODE, BITRATE_MODE_CBR);
        format->setInt32(KEY_BIT_RATE, computeBitrate());
    } else if (mBitrateMode == kConstantQuality) {
        format->setInt32(KEY_BITRATE_MODE, BITRATE_MODE_CQ);
        format->setInt32(KEY_QUALITY, mQuality);
    }
    if (mFormat != nullptr && mFormat->bitDepth > 8 && isChip("SM")) format->setInt32(KEY_PROFILE, kHevcProfileMain10);
}

// Raw bits of the frame at 12 bits a pixel, times a target compression of 0.25 x 0.3346, scaled by the quality. The
// order of the factors is fixed: another order rounds to another number of bits. An invalid quality can overflow an
// int.
int32_t QuillHeifEncoder::computeBitrate() const {
    const double bitrate = static_cast<double>(mGeometry.width * mGeometry.height) * 1.5 * 8.0 * 0.25 * 0.3346 *
                           static_cast<double>(mQuality) / 100.0;
    return static_cast<int32_t>(std::clamp<double>(bitrate, INT32_MIN, INT32_MAX));
}

void QuillHeifEncoder::getEncodeColorFormat() {
    if (mFormat == nullptr) return;
    mCodecColorFormat = usesSurfacePath() ? kCodecSurface : mFormat->bufferFormat;
    mInputBufferSize = static_cast<uint64_t>(tileBytes(*mFormat));
}

bool QuillHeifEncoder::usesSurfacePath() const {
    if (mFormat == nullptr) return false;
    return mFormat->input == TileInput::kSurface || (mFormat->input == TileInput::kVendorSurface && mIsVendorHevc);
}

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
    // "connect from" on purpose: the wording is part of the interface.
    if (err != OK) ALOGE("Failed to connect from surface, err %d", err);
}

int32_t QuillHeifEncoder::surfacePixelFormat() const {
    if (mFormat != nullptr && mFormat->chroma == Chroma::kNone) return HAL_PIXEL_FORMAT_RGBA_8888;
    if (!usesSurfacePath()) return kVendorP010SemiPlanar;
    // This one chip's encoder takes its own P010 layout from a surface; all others take the platform's.
    const int32_t format = isChip("SM8350") ? kVendorP010SemiPlanar : static_cast<int32_t>(HAL_PIXEL_FORMAT_YCBCR_P010);
    if (isVerboseLogEnabled()) ALOGI("Surface color-format: %d", format);
    return format;
}

void QuillHeifEncoder::releaseSurface() {
    if (!usesSurfacePath() || mNativeWindow == nullptr) return;
    const status_t err = native_window_api_disconnect(mNativeWindow.get(), NATIVE_WINDOW_API_CPU);
    if (err != OK) ALOGE("Failed to disconnect from surface, err %d", err);
}

}  // namespace android
