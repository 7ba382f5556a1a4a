#pragma once

#include <stdint.h>

#include <binder/IInterface.h>
#include <system/window.h>
#include <ui/GraphicBuffer.h>
#include <utils/Errors.h>

namespace android {

/**
 * The producer's end of a buffer queue; clients wrap it in a Surface. Thread-safe. Every call but `disconnect` returns
 * NO_INIT once the consumer is gone. Producer and consumer live in one process, so buffers are passed as objects and
 * not by slot number.
 */
class IGraphicBufferProducer : public IInterface {
  public:
    /** How many buffers the producer may hold at once; 1 at first. BAD_VALUE if it holds more, or if out of range. */
    virtual status_t setMaxDequeuedBufferCount(int maxDequeuedBuffers) = 0;

    /**
     * Blocks until a buffer of this geometry is free; its contents are those of its last use. Width and height 0 and
     * format 0 mean the queue's defaults. INVALID_OPERATION if the producer holds its maximum; NO_INIT if it is not
     * connected, or no longer after the wait.
     */
    virtual status_t dequeueBuffer(sp<GraphicBuffer>* outBuffer, uint32_t width, uint32_t height, PixelFormat format,
                                   uint64_t usage) = 0;

    /** Hands a dequeued buffer to the consumer, with the current time; BAD_VALUE for any other buffer. */
    virtual status_t queueBuffer(const sp<GraphicBuffer>& buffer) = 0;

    /** Gives a dequeued buffer back unused; BAD_VALUE for any other buffer. */
    virtual status_t cancelBuffer(const sp<GraphicBuffer>& buffer) = 0;

    /** BAD_VALUE if a producer is connected already, and for an unknown API. */
    virtual status_t connect(int api) = 0;

    /** Takes dequeued buffers back; queued frames still go to the consumer. BAD_VALUE if `api` is not connected. */
    virtual status_t disconnect(int api) = 0;
};

}  // namespace android
