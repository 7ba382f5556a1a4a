#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <memory>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/Vector.h>

namespace android {

struct AString;
struct ICrypto;  // whole in <mediadrm/ICrypto.h>, needed even to pass a null one
class IGraphicBufferProducer;
class MediaCodecBuffer;
struct MediaCodecInfo;
class Surface;  // whole in <gui/Surface.h>, likewise

/**
 * One encoder of the device, driven by synchronous calls.
 *
 * States: uninitialised -> configure -> configured -> start -> started; `stop` and `reset` lead back to
 * uninitialised, `release` ends every use. A call in the wrong state returns INVALID_OPERATION. Every
 * call may come from any thread; a dequeue that waits returns INVALID_OPERATION when the codec stops.
 *
 * Output is in input order: INFO_FORMAT_CHANGED, one buffer flagged CODECCONFIG with the parameter sets,
 * then one buffer flagged SYNCFRAME per picture (ISO/IEC 23008-2 Annex B byte stream), and after an end
 * of stream one empty buffer flagged EOS.
 */
struct MediaCodec : public AHandler {
    enum ConfigureFlags {
        CONFIGURE_FLAG_ENCODE = 1,
        CONFIGURE_FLAG_USE_BLOCK_MODEL = 2,
    };

    enum BufferFlags {
        BUFFER_FLAG_SYNCFRAME = 1,
        BUFFER_FLAG_CODECCONFIG = 2,
        BUFFER_FLAG_EOS = 4,
        BUFFER_FLAG_PARTIAL_FRAME = 8,
        BUFFER_FLAG_MUXER_DATA = 16,
    };

    static const pid_t kNoPid = -1;
    static const uid_t kNoUid = static_cast<uid_t>(-1);

    /** The first codec of the device's list for `mime`; null and NAME_NOT_FOUND when there is none. */
    static sp<MediaCodec> CreateByType(const sp<ALooper>& looper, const AString& mime, bool encoder,
                                       status_t* err = nullptr, pid_t pid = kNoPid, uid_t uid = kNoUid);
    /** The codec of that name; null and NAME_NOT_FOUND when the device has none. */
    static sp<MediaCodec> CreateByComponentName(const sp<ALooper>& looper, const AString& name, status_t* err = nullptr,
                                                pid_t pid = kNoPid, uid_t uid = kNoUid);

    /**
     * Sets up an encoder of "width" x "height" pictures in "color-format". `nativeWindow` and `crypto` are
     * for decoders and must be null. BAD_VALUE for a format that the codec cannot take.
     */
    status_t configure(const sp<AMessage>& format, const sp<Surface>& nativeWindow, const sp<ICrypto>& crypto,
                       uint32_t flags);
    /** Between configure and start, with COLOR_FormatSurface: pictures then come from this surface only. */
    status_t createInputSurface(sp<IGraphicBufferProducer>* bufferProducer);

    status_t start();
    /** Waits for the picture being coded, drops everything else; the codec must be configured anew. */
    status_t stop();
    status_t reset();
    status_t release();
    /** Drops all input and output, takes back every buffer, goes on. */
    status_t flush();

    /**
     * Hands a filled input buffer to the codec: one picture of `size` bytes from `offset`, or size 0.
     * -ERANGE for an index that does not exist, -EACCES for one that the client does not hold, BAD_VALUE
     * for a range that is not a whole picture.
     */
    status_t queueInputBuffer(size_t index, size_t offset, size_t size, int64_t presentationTimeUs, uint32_t flags,
                              AString* errorDetailMsg = nullptr);
    /** WOULD_BLOCK (-11) when none became free in time; a negative time-out waits for ever. */
    status_t dequeueInputBuffer(size_t* index, int64_t timeoutUs = 0ll);
    /** As dequeueInputBuffer; INFO_FORMAT_CHANGED when `getOutputFormat` has something new to say. */
    status_t dequeueOutputBuffer(size_t* index, size_t* offset, size_t* size, int64_t* presentationTimeUs,
                                 uint32_t* flags, int64_t timeoutUs = 0ll);
    status_t releaseOutputBuffer(size_t index);
    /** Surface input only. */
    status_t signalEndOfInputStream();

    /** From `configure` on; with "csd-0" since INFO_FORMAT_CHANGED. The message is the caller's own. */
    status_t getOutputFormat(sp<AMessage>* format) const;
    status_t getInputFormat(sp<AMessage>* format) const;
    status_t getOutputFormat(size_t index, sp<AMessage>* format);

    status_t getInputBuffers(Vector<sp<MediaCodecBuffer>>* buffers) const;
    status_t getOutputBuffers(Vector<sp<MediaCodecBuffer>>* buffers) const;
    /** The memory of a buffer that the client holds; INVALID_OPERATION for any other index. */
    status_t getInputBuffer(size_t index, sp<MediaCodecBuffer>* buffer);
    status_t getOutputBuffer(size_t index, sp<MediaCodecBuffer>* buffer);

    status_t getName(AString* componentName) const;
    status_t getCodecInfo(sp<MediaCodecInfo>* codecInfo) const;
    /** Every picture is one already. */
    status_t requestIDRFrame();

  protected:
    ~MediaCodec() override;
    void onMessageReceived(const sp<AMessage>& msg) override;

  private:
    struct Impl;

    explicit MediaCodec(std::shared_ptr<Impl> impl);
    static sp<MediaCodec> create(ssize_t listIndex, status_t* err);

    const std::shared_ptr<Impl> mImpl;
    DISALLOW_EVIL_CONSTRUCTORS(MediaCodec);
};

}  // namespace android
