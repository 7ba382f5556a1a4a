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

namespace android {

struct AString;
struct ICrypto;  // complete in <mediadrm/ICrypto.h>, which even a null one needs
class IGraphicBufferProducer;
class MediaCodecBuffer;
struct MediaCodecInfo;
class Surface;  // complete in <gui/Surface.h>, likewise

/**
 * One encoder of the device, driven by synchronous calls.
 *
 * States: uninitialised -> configure -> configured -> start -> started; `stop` leads back to uninitialised, and after
 * `release` the codec is of no use. A call in the wrong state returns INVALID_OPERATION. Every call may come from any
 * thread; a waiting dequeue returns INVALID_OPERATION when the codec stops.
 *
 * Output is in input order: INFO_FORMAT_CHANGED, one buffer flagged CODECCONFIG with the parameter sets, then one
 * buffer flagged SYNCFRAME per picture (ISO/IEC 23008-2 Annex B byte stream), and at the end of the stream an empty
 * buffer flagged EOS.
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

    /** The first codec of the device's list for `mime`; null and NAME_NOT_FOUND if there is none. */
    static sp<MediaCodec> CreateByType(const sp<ALooper>& looper, const AString& mime, bool encoder,
                                       status_t* err = nullptr, pid_t pid = kNoPid, uid_t uid = kNoUid);
    /** The codec of that name; null and NAME_NOT_FOUND if the device has none. */
    static sp<MediaCodec> CreateByComponentName(const sp<ALooper>& looper, const AString& name, status_t* err = nullptr,
                                                pid_t pid = kNoPid, uid_t uid = kNoUid);

    /**
     * Sets up an encoder of "width" x "height" pictures in "color-format". `nativeWindow` and `crypto` are for decoders
     * and must be null. BAD_VALUE for a format that the codec does not support.
     */
    status_t configure(const sp<AMessage>& format, const sp<Surface>& nativeWindow, const sp<ICrypto>& crypto,
                       uint32_t flags);
    /** Between configure and start, with COLOR_FormatSurface. All pictures then come from this surface. */
    status_t createInputSurface(sp<IGraphicBufferProducer>* bufferProducer);

    status_t start();
    /** Waits for the pictures being coded and drops all others. The codec must be configured again. */
    status_t stop();
    status_t release();

    /**
     * Hands a filled input buffer to the codec: one picture of `size` bytes from `offset`, or nothing if `size` is 0.
     * -ERANGE for an index that does not exist, -EACCES for one that the client does not hold, BAD_VALUE for a range
     * that is not a whole picture.
     */
    status_t queueInputBuffer(size_t index, size_t offset, size_t size, int64_t presentationTimeUs, uint32_t flags,
                              AString* errorDetailMsg = nullptr);
    /** WOULD_BLOCK (-11) if none is free in time; a negative time-out waits without limit. */
    status_t dequeueInputBuffer(size_t* index, int64_t timeoutUs = 0ll);
    /** As dequeueInputBuffer; INFO_FORMAT_CHANGED if the output format is a new one. */
    status_t dequeueOutputBuffer(size_t* index, size_t* offset, size_t* size, int64_t* presentationTimeUs,
                                 uint32_t* flags, int64_t timeoutUs = 0ll);
    status_t releaseOutputBuffer(size_t index);

    /** Valid after `configure`; has "csd-0" after INFO_FORMAT_CHANGED. The message is the caller's own copy. */
    status_t getOutputFormat(sp<AMessage>* format) const;
    /** The memory of a buffer that the client holds; INVALID_OPERATION for any other index. */
    status_t getInputBuffer(size_t index, sp<MediaCodecBuffer>* buffer);
    status_t getOutputBuffer(size_t index, sp<MediaCodecBuffer>* buffer);

    status_t getName(AString* componentName) const;

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
