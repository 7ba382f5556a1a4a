#pragma once

#include <stdint.h>

#include <binder/IInterface.h>
#include <system/window.h>
#include <ui/GraphicBuffer.h>
#include <utils/Errors.h>
#include <utils/Timers.h>

namespace android {

/**
 * The producer's end of a buffer queue; clients wrap it in a Surface. Thread-safe. Every call but `disconnect` returns
 * NO_INIT once the consumer is gone. Producer and consumer live in one process, so buffers are passed as such and not
 * by slot number.
 */
class IGraphicBufferProducer : public IInterface {
  public:
    enum class DisconnectMode {
        Api,       // whoever connected under this API
        AllLocal,  // whichever API is connected from this process
    };

    /** What goes with a frame. */
    struct QueueBufferInput {
        int64_t timestamp = 0;  // nanoseconds
        bool isAutoTimestamp = true;
        android_dataspace_t dataSpace = HAL_DATASPACE_UNKNOWN;
        int scalingMode = NATIVE_WINDOW_SCALING_MODE_FREEZE;
        uint32_t transform = 0;
    };

    /** How many buffers the producer may hold at once: 1 until set. BAD_VALUE below what it holds, and out of range. */
    virtual status_t setMaxDequeuedBufferCount(int maxDequeuedBuffers) = 0;

    /** In asynchronous mode a new frame replaces one that still waits for the consumer. */
    virtual status_t setAsyncMode(bool async) = 0;

    /** How long `dequeueBuffer` waits for a free buffer, in nanoseconds; negative is for ever, as until set. */
    virtual status_t setDequeueTimeout(nsecs_t timeout) = 0;

    /**
     * Blocks until a buffer of this geometry can be had; its contents are those it was last used with. Width and
     * height 0 and format 0 are the queue's defaults. INVALID_OPERATION when the producer holds its maximum,
     * TIMED_OUT, NO_INIT when not connected, also by a disconnection during the wait.
     */
    virtual status_t dequeueBuffer(sp<GraphicBuffer>* outBuffer, uint32_t width, uint32_t height, PixelFormat format,
                                   uint64_t usage) = 0;

    /** Hands a dequeued buffer to the consumer; BAD_VALUE for any other. */
    virtual status_t queueBuffer(const sp<GraphicBuffer>& buffer, const QueueBufferInput& input) = 0;

    /** Gives a dequeued buffer back unused; BAD_VALUE for any other. */
    virtual status_t cancelBuffer(const sp<GraphicBuffer>& buffer) = 0;

    /** NATIVE_WINDOW_*; BAD_VALUE for what is not known. */
    virtual int query(int what, int* value) = 0;

    /** BAD_VALUE when a producer is connected already, or for an unknown API. */
    virtual status_t connect(int api) = 0;

    /** Takes back what is dequeued; queued frames still go to the consumer. BAD_VALUE when not connected so. */
    virtual status_t disconnect(int api, DisconnectMode mode = DisconnectMode::Api) = 0;
};

}  // namespace android
