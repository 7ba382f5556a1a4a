#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

#include <gui/Surface.h>
#include <media/MediaCodecBuffer.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>
#include <system/window.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include "Lease.h"
#include "TileLayout.h"

namespace android {

/**
 * Turns one camera frame into the coded tiles of a HEIF image with one platform HEVC encoder (ITU-T H.265).
 *
 * Order of calls: construct, `initializeCodec`, `start`, `addYuvBuffer`, `getFormat`, `close`. No lock of its own: all
 * calls but `close` come from one thread at a time. One frame per encoder: a second `addYuvBuffer` feeds nothing and
 * only drains.
 */
class QuillHeifEncoder : public RefBase {
  public:
    /** Sizes in samples, `quality` 0-100, `colorFormat` an `InputColorFormat`. Never fails. */
    QuillHeifEncoder(int width, int height, int stride, int sliceHeight, int colorFormat, int quality);

    /** Starts the codec; NO_INIT without one. */
    virtual status_t start();
    /**
     * Encodes the frame at `frame` (layout of the color format, geometry of the constructor) and appends one new
     * buffer per coded tile to `out`, in tile order. Blocks. After a failure `out` keeps what had been appended.
     */
    virtual status_t addYuvBuffer(uint8_t* frame, std::vector<sp<ABuffer>>& out);
    /**
     * Stops and releases the codec. Must come before the last reference goes. May come from a second thread, as the
     * last call: a codec that is stopped ends an `addYuvBuffer` on the first thread with an error.
     */
    virtual void close();

    /**
     * The frame of `addYuvBuffer` is read under this lease, at most a tile at a time and never across a platform call.
     * Once it is revoked the frame ends with TIMED_OUT. The lease outlives `addYuvBuffer`.
     */
    void setFrameLease(Lease* lease) { mFrameLease = lease; }
    /** Creates and configures the codec; 0 on success. */
    status_t initializeCodec();
    /**
     * The track format for the HEIF muxer: the codec's own output format (the same message, with its codec-specific
     * data) turned into that of the whole image. Null before the first frame has produced output.
     */
    sp<AMessage> getFormat();
    bool isSizeSupportedByHeifEncoder(int width, int height, bool* useGrid, AString* hevcName);
    /** Chooses `mCodecColorFormat` and `mInputBufferSize` by the frame's format; both stay for an unknown one. */
    void getEncodeColorFormat();
    /** Coded pictures of one frame: grid rows x columns, 1 without a grid. */
    int32_t tileCount() const { return mNumTiles; }

    status_t queueInputData(uint8_t* frame, size_t retriesLeft);
    /** Feeds tiles while input buffers are free; `retriesLeft` 0 means that none may be waited for any more. */
    status_t queueInputDataToByteBuffer(uint8_t* frame, size_t retriesLeft);
    /** Feeds one tile; blocks while the surface has no free buffer. */
    status_t queueInputDataToSurface(uint8_t* frame);
    void createSurfaceForEncoder();
    void releaseSurface();
    /** Microseconds of tile `k` of the current frame: the tiles of a frame are spread over one second. */
    int64_t computePresentationTime(int k) const;

    /** Lays tile `tileIndex` into `dst`; `dstStride` (pixels a row) is read for RGBA only. Always 0. */
    int fillInputBuffer(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride);
    void splitYuv8BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride);
    void splitYuvI4208BitData(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride);
    void splitP010Data(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride);
    void splitRGBA8888Data(uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride);

    /** Tiles a whole 8-bit semi-planar frame of pitch `width`; whole tiles only, 393216 bytes each in `dst`. */
    void splitYuvData(uint8_t* frame, int width, int height, uint8_t* dst);
    /** Tiles a whole P010 frame of pitch `width` samples; whole tiles only, 786432 bytes each in `dst`. */
    void split10BitYuvData(uint8_t* frame, int width, int height, uint8_t* dst);
    /** Re-pitches a P010 frame from `width` x `height` to the aligned size; returns `dst`. */
    uint8_t* bufferAlign(uint8_t* frame, int width, int height, int alignedWidth, int alignedHeight, uint8_t* dst);

  protected:
    ~QuillHeifEncoder() override;

  private:
    /** Which rate control the codec gets. */
    enum BitrateMode : int32_t {
        kConstantQuality = 0,  ///< a component asked for by name
        kConstantBitrate = 2,  ///< whichever HEVC encoder the platform picks
    };

    status_t createCodec();
    sp<MediaCodec> createCodecComponent(const AString& hevcName);
    void recogniseVendor();
    void layOutTiles();
    sp<AMessage> makeCodecFormat() const;
    void setGridKeys(const sp<AMessage>& format) const;
    void setParameter(const sp<AMessage>& format);
    void setRateParameters(const sp<AMessage>& format) const;
    int32_t computeBitrate() const;
    int32_t surfacePixelFormat() const;
    bool usesSurfacePath() const;

    status_t encodeFrame(uint8_t* frame, std::vector<sp<ABuffer>>& out);
    static constexpr size_t kNewsWithoutTile = 1500;
    /** How far the draining of one frame is, and what of the codec it still accepts. */
    struct Draining {
        size_t retriesLeft;  ///< waits without output, in the whole frame
        size_t newsLeft;     ///< changes announced and buffers that are no tile, until the next tile
        int32_t collected;   ///< tiles
    };
    /** Waits for one coded buffer and collects it; OK too when none came and the retries allow another try. */
    status_t drainOutput(Draining* draining, std::vector<sp<ABuffer>>& out);
    status_t collectOutput(size_t index, uint32_t flags, Draining* draining, std::vector<sp<ABuffer>>& out);
    status_t keepTile(const sp<ABuffer>& tile, Draining* draining, std::vector<sp<ABuffer>>& out);
    /** Zeroes the `bytes` of the next tile's buffer if the tile does not fill it. */
    void clearEdgeTile(uint8_t* buffer, size_t bytes) const;
    /** The body of `fillInputBuffer`, for any format. */
    void copyTileOf(const FrameFormat& format, uint8_t* dst, uint8_t* frame, int tileIndex, int dstStride) const;
    /** Lays the next tile into codec input buffer `index`, which `buffer` then holds. */
    status_t fillCodecBuffer(size_t index, uint8_t* frame, sp<MediaCodecBuffer>* buffer);
    /** Lays the next tile into a buffer of the input surface. */
    status_t fillSurfaceBuffer(ANativeWindowBuffer* windowBuffer, const uint8_t* frame);

    const FrameGeometry mGeometry;
    const int32_t mColorFormat;
    const FrameFormat* const mFormat;  ///< null for a code that is not known
    const int32_t mQuality;
    bool mUseGrid = true;
    int32_t mTileWidth = 0;
    int32_t mTileHeight = 0;
    int32_t mGridRows = 0;
    int32_t mGridCols = 0;
    int32_t mNumTiles = 0;
    int32_t mNumOutputs = 0;
    int32_t mFrameIndex = 0;
    bool mIsVendorHevc = false;
    bool mIsMtkHevc = false;
    int32_t mBitrateMode = kConstantQuality;
    int32_t mCodecColorFormat;
    uint64_t mInputBufferSize = 0;
    int32_t mInputTileIndex = 0;
    sp<MediaCodec> mCodec;
    sp<ALooper> mCodecLooper;
    sp<AMessage> mOutputFormat;
    sp<ANativeWindow> mNativeWindow;
    sp<Surface> mSurface;
    Lease mNeverRevoked;
    Lease* mFrameLease = &mNeverRevoked;
};

}  // namespace android
