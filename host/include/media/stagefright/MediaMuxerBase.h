#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {

struct ABuffer;
struct AMessage;

/** A muxer of any format. The order of calls is create, addTrack, start, writeSampleData, stop. */
struct MediaMuxerBase : public RefBase {
    enum OutputFormat {
        OUTPUT_FORMAT_MPEG_4 = 0,
        OUTPUT_FORMAT_WEBM = 1,
        OUTPUT_FORMAT_THREE_GPP = 2,
        OUTPUT_FORMAT_HEIF = 3,
        OUTPUT_FORMAT_OGG = 4,
        OUTPUT_FORMAT_LIST_END
    };

    MediaMuxerBase() = default;
    ~MediaMuxerBase() override = default;
    MediaMuxerBase(const MediaMuxerBase&) = delete;
    MediaMuxerBase& operator=(const MediaMuxerBase&) = delete;

    /** Returns the index that `writeSampleData` takes, or a negative status. Only before `start`. */
    virtual ssize_t addTrack(const sp<AMessage>& format) = 0;

    /** Needs at least one track. */
    virtual status_t start() = 0;

    /** `degrees` clockwise: 0, 90, 180 or 270; anything else is BAD_VALUE. Only before `start`. */
    virtual status_t setOrientationHint(int degrees) = 0;

    /** Finishes the file and returns when it is written. Only once, after `start`. */
    virtual status_t stop() = 0;

    /** `flags` are the codec's buffer flags. The caller may reuse the buffer on return. Between `start` and `stop`. */
    virtual status_t writeSampleData(const sp<ABuffer>& buffer, size_t trackIndex, int64_t timeUs, uint32_t flags) = 0;

    /** Tracks added so far; -1 once the muxer has stopped. */
    virtual ssize_t getTrackCount() = 0;

    /** A copy of the format that was added, or null if there is no such track. */
    virtual sp<AMessage> getTrackFormat(size_t index) = 0;
};

}  // namespace android
