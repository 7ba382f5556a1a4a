#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

#include "Frame.h"

namespace android {

class QuillHeifEncoder;

/**
 * One HEIF writer: encodes one camera frame and muxes it, with its EXIF block, to the caller's descriptor.
 *
 * Always held by strong pointers. Two threads touch it without a lock: the caller's, and the writer's own looper
 * "QuillHeifWriter-ProcessInputFrame", which encodes and muxes (InputFrame.h). Calls come from one thread at a time, in
 * the order `start`, `processInputFrame`, `close`, `destroy`. Each returns within a bounded time, whatever the platform
 * does; `start` waits for the codec's own calls.
 */
class QuillHeifWriter : public AHandler {
  public:
    /** Called on the looper thread when a file is finished: 0, and the in-memory result (always null and 0). */
    using Callback = void (*)(int, void*, unsigned int);

    struct InputFrame;  ///< one queued frame, see InputFrame.h

    QuillHeifWriter();

    /**
     * Starts the looper and, once in the writer's life, configures and starts the encoder. Sizes in samples,
     * `colorFormat` an InputColorFormat, `quality` 0-100, `rotation` clockwise degrees. An error is kept and
     * reported by the next frame.
     */
    void start(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight, int32_t colorFormat, int32_t quality,
               int32_t rotation);
    /** The configuring half of `start`: 0, or the encoder's error. */
    status_t initEncoder(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight, int32_t colorFormat,
                         int32_t quality, int32_t rotation);
    void setCallback(Callback callback);
    /** Bytes of the frame that `start` described; zeros unless it succeeded. */
    FrameBytes expectedFrame() const;

    /**
     * Writes one HEIF file to `fd` (open for writing; never closed here). Blocks the caller, at most 10 s. `yuv` has
     * the geometry of `start`; NV21 chroma is left in NV12 order. `exif` may be null. 0 when the file was finished.
     * After -1 nothing of the caller's is touched any more, and its file is as it was, with one exception: a muxer that
     * was writing when the time ran out may still complete the still. A second frame is refused: -1 at once.
     */
    int32_t processInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd);

    /**
     * Writes a live photo: the still as `processInputFrame` does, with the XMP packet `xmp` (`xmpLen` bytes, 0 for
     * none), then the video, the gain map (-1 for none) and `fileExtender` (null for none) as boxes. 0, or -1 with the
     * file left as far as it was written.
     */
    int createLivePhoto(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, char* xmp, uint32_t xmpLen,
                        uint8_t* fileExtender, uint32_t fileExtenderLen, int gainmapFd, int videoFd, int fd);
    /** Appends the boxes behind the still, at `fd`'s offset; 0 or -1. Descriptors stay open. */
    int addMotionPhoto(int videoFd, int gainmapFd, int fd, uint8_t* fileExtender, uint32_t fileExtenderLen);
    int addGainMap(int gainmapFd, int fd);
    /** Kept for callers of the interface: the packet of a live photo is its caller's. */
    bool createXmp(uint32_t len);
    /** A motion-photo packet for callers to fill: head, the video's length in decimal digits, tail. */
    static const char mXmpDataHead[967];
    static const char mXmpDataTail[153];

    /** Closes and releases the encoder, which ends a frame in work. */
    void close();
    /** Stops the looper and joins its thread. A looper that a platform call holds is left behind instead. */
    void destroy();

    /**
     * A new[] copy of the in-memory result for the caller to delete[]; false before a frame is finished. Nothing
     * fills that result: a finished frame gives an empty copy.
     */
    bool getEncData(uint8_t** data, uint32_t* size);
    /** Debug dump of `len` bytes of `buf` to the file `path`. */
    void saveBuffer(const void* buf, int32_t len, const char* path);

    // EXIF: see ExifBlock.h for what is read and written.
    /**
     * True when the block (`exifLen` bytes) is to get a thumbnail; `initPosition`, 0 on entry, is then the offset of
     * its TIFF header. False too when a system property says so.
     */
    bool analysisExif(uint8_t* exif, uint32_t exifLen, uint32_t& initPosition);
    /**
     * Builds at `newExif` the block `oldExif` with a thumbnail of `yuv`, the frame as NV12. `exifSize` is the old size
     * and becomes the new one; `newExif` holds the old size + thumbnailCapacity() + kThumbnailDirectorySize. False,
     * with nothing changed, when there is no thumbnail to be had.
     */
    bool alterExif(uint8_t* yuv, uint8_t* oldExif, uint8_t* newExif, uint32_t& exifSize, uint32_t initPosition);
    /** Caller's thread: replaces the queued frame's block, unless the looper has taken it. `yuv`: the frame. */
    void changeExif(uint8_t* yuv, uint8_t* exif, uint32_t exifSize, uint32_t initPosition);

    // Thumbnail: 256 pixels wide, 8-bit NV12 without padding, then JPEG.
    void setThmbSize();
    /** From the frame as NV12 to a JPEG of at most thumbnailCapacity() bytes at `dst`; its size, -1 on failure. */
    int creatThmb(uint8_t* src, uint8_t* dst);
    /** The compressing half of `creatThmb`. */
    int yuvToJpeg(uint8_t* nv12, uint8_t* dst);
    /** Bytes of an NV12 thumbnail, and the most that its JPEG may take; 0 for a size that JPEG cannot hold. */
    size_t thumbnailCapacity() const;

    // Pixels, in the geometry of `start`; see Nv12Conversion.h and Thumbnail.h for layouts and results.
    /** The frame, in its own format, as NV12; 1, or -1 for a format that is not known. */
    int saveYuvBuf(uint8_t* frame, uint8_t* nv12);
    void convertYuvI420ToNV12(uint8_t* src, uint8_t* dst);
    void convertP010ToNV12(uint8_t* src, uint8_t* dst);
    void convertRGBA8888ToNV12(uint8_t* src, uint8_t* dst);
    /** Reduces the NV12 frame to thumbnail size; the destination's chroma is zeroed before. */
    void subsamplingYuv(uint8_t* src, uint8_t* dst);
    int bilinear(uint8_t* src, int x, int y);
    void splitYuv(uint8_t* src, uint8_t* dstY, uint8_t* dstU, uint8_t* dstV);

    /** Kept for callers of the interface; EXIF travels with its frame. */
    void addExifData(uint8_t* exif, uint32_t exifLen);

  protected:
    ~QuillHeifWriter() override;
    void onMessageReceived(const sp<AMessage>& msg) override;

  private:
    enum : uint32_t { kWhatProcessInputFrameNotify = 0 };

    // Caller's thread.
    bool queueInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd, bool* needsThumbnail,
                         uint32_t* initPosition);
    /** Memory for a thumbnail as NV12, zeroed; null without memory, or for a size that JPEG cannot hold. */
    std::unique_ptr<uint8_t[]> emptyThumbnail() const;
    void replaceQueuedExif(const uint8_t* exif, uint32_t exifSize);
    bool isLooperAtWork() const;

    // Looper thread.
    void writeHeadFrame();
    void finishFile();
    void addYuvBuffer(uint8_t* yuv);
    bool swapNv21Chroma(uint8_t* yuv);
    void startMuxer(const sp<AMessage>& format);
    void processExifData();
    void onOutputBufferReceived(const std::vector<sp<ABuffer>>& buffers);
    void clearTopInputFrameExifData();

    // Set by `start`, then read by both threads.
    int32_t mInitStatus = NO_INIT;
    bool mInitTried = false;
    FrameGeometry mGeometry{};
    int32_t mColorFormat = 0;
    const FrameFormat* mFormat = nullptr;  ///< null for a code that is not known
    int32_t mQuality = 95;
    int32_t mRotation = 0;
    int32_t mImageCount = 1;
    int32_t mTileCount = 1;
    int32_t mThmbWidth = 0;
    int32_t mThmbHeight = 0;
    Callback mCallback = nullptr;

    // The caller's.
    sp<QuillHeifEncoder> mEncoder;
    sp<ALooper> mLooper;
    sp<InputFrame> mQueuedFrame;  ///< the one frame of the writer's life
    std::string mXmpData;         ///< of the last live photo with a packet
    uint8_t* mEncodedData = nullptr;
    uint32_t mEncodedSize = 0;

    /** The looper's, from the moment that the message is posted. */
    std::vector<sp<InputFrame>> mInputFrames;
};

}  // namespace android
