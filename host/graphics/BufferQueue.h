#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include <gui/IGraphicBufferProducer.h>
#include <ui/GraphicBuffer.h>

namespace quill::host {

/** A buffer queue between one producer (a Surface) and one consumer (the codec). Thread-safe. */
class BufferQueue : public android::IGraphicBufferProducer {
  public:
    /** Has at most `maxBuffers` buffers (at least 1): a dequeue blocks while all are queued or held. */
    explicit BufferQueue(int maxBuffers);

    // The consumer's end.

    /**
     * Called outside the lock, on the producer's thread, after each frame is queued. A call may still be running after
     * a new listener is set or the queue is abandoned, so the listener must keep what it uses alive.
     */
    void setFrameListener(std::function<void()> onFrameQueued);
    /** The next queued buffer and the time when it was queued; null if there is none. */
    android::sp<android::GraphicBuffer> acquire(int64_t* timeUs = nullptr);
    /** Gives an acquired buffer back to the producer. */
    void release(const android::sp<android::GraphicBuffer>& buffer);
    /** The consumer is gone: producer calls fail with NO_INIT, also those that wait; queued frames are dropped. */
    void abandon();

    // The producer's end.
    android::status_t setMaxDequeuedBufferCount(int maxDequeuedBuffers) override;
    android::status_t dequeueBuffer(android::sp<android::GraphicBuffer>* outBuffer, uint32_t width, uint32_t height,
                                    android::PixelFormat format, uint64_t usage) override;
    android::status_t queueBuffer(const android::sp<android::GraphicBuffer>& buffer) override;
    android::status_t cancelBuffer(const android::sp<android::GraphicBuffer>& buffer) override;
    android::status_t connect(int api) override;
    android::status_t disconnect(int api) override;

  protected:
    ~BufferQueue() override = default;

  private:
    enum class Owner { kQueue, kProducer, kFrame, kConsumer };

    /** A buffer and its owner; kFrame means queued and not yet acquired. */
    struct Slot {
        android::sp<android::GraphicBuffer> buffer;
        Owner owner;
    };

    struct Frame {
        android::sp<android::GraphicBuffer> buffer;
        int64_t timeUs;
    };

    struct Geometry {
        uint32_t width;
        uint32_t height;
        android::PixelFormat format;
        uint64_t usage;

        bool fits(const android::GraphicBuffer& buffer) const;
    };

    // All with mLock held.
    bool isUsable() const { return !mAbandoned && mConnectedApi != 0; }
    bool hasRoom() const;
    int countOf(Owner owner) const;
    Slot* find(const android::sp<android::GraphicBuffer>& buffer, Owner owner);
    Slot* findFree(const Geometry* geometry);
    android::status_t waitForRoom(std::unique_lock<std::mutex>& guard);
    android::status_t takeBuffer(const Geometry& geometry, android::sp<android::GraphicBuffer>* outBuffer);
    void eraseSlotsOf(Owner owner);

    const size_t mMaxBuffers;
    std::mutex mLock;
    std::condition_variable mRoom;  // a buffer may be free, or the queue is unusable
    std::vector<Slot> mSlots;
    std::deque<Frame> mFrames;
    std::function<void()> mOnFrameQueued;
    int mConnectedApi = 0;
    int mMaxDequeued = 1;
    bool mAbandoned = false;
};

}  // namespace quill::host
