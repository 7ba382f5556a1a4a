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
    /** At most `maxBuffers` (at least 1) exist: the producer blocks in dequeue while all are queued or held. */
    explicit BufferQueue(int maxBuffers);

    // The consumer's end.

    /**
     * Called outside the lock, on the producer's thread, after each frame became acquirable. A call may still be
     * running when a new listener has been set or the queue abandoned: the listener keeps alive what it uses.
     */
    void setFrameListener(std::function<void()> onFrameQueued);
    /** The next queued buffer in order, with what the producer said of it; null when there is none. */
    android::sp<android::GraphicBuffer> acquire(QueueBufferInput* outInput = nullptr);
    /** Gives an acquired buffer back to the producer. */
    void release(const android::sp<android::GraphicBuffer>& buffer);
    /** The consumer is gone: producer calls fail with NO_INIT, blocked ones return, waiting frames are dropped. */
    void abandon();

    // The producer's end.
    android::status_t setMaxDequeuedBufferCount(int maxDequeuedBuffers) override;
    android::status_t setAsyncMode(bool async) override;
    android::status_t setDequeueTimeout(nsecs_t timeout) override;
    android::status_t dequeueBuffer(android::sp<android::GraphicBuffer>* outBuffer, uint32_t width, uint32_t height,
                                    android::PixelFormat format, uint64_t usage) override;
    android::status_t queueBuffer(const android::sp<android::GraphicBuffer>& buffer,
                                  const QueueBufferInput& input) override;
    android::status_t cancelBuffer(const android::sp<android::GraphicBuffer>& buffer) override;
    int query(int what, int* value) override;
    android::status_t connect(int api) override;
    android::status_t disconnect(int api, DisconnectMode mode = DisconnectMode::Api) override;

  protected:
    ~BufferQueue() override = default;

  private:
    enum class Owner { kQueue, kProducer, kFrame, kConsumer };

    /** One buffer and who has it; kFrame is queued and waits for the consumer. */
    struct Slot {
        android::sp<android::GraphicBuffer> buffer;
        Owner owner;
    };

    struct Frame {
        android::sp<android::GraphicBuffer> buffer;
        QueueBufferInput input;
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
    void dropWaitingFrames();

    const size_t mMaxBuffers;
    std::mutex mLock;
    std::condition_variable mRoom;  // a buffer may be free, or the queue unusable
    std::vector<Slot> mSlots;
    std::deque<Frame> mFrames;
    std::function<void()> mOnFrameQueued;
    int mConnectedApi = 0;
    int mMaxDequeued = 1;
    nsecs_t mDequeueTimeout = -1;
    bool mAsync = false;
    bool mAbandoned = false;
};

}  // namespace quill::host
