#define LOG_TAG "BufferQueue"

#include "BufferQueue.h"

#include <algorithm>

#include <log/log.h>

#include "Clock.h"

namespace quill::host {

using android::BAD_VALUE;
using android::GraphicBuffer;
using android::INVALID_OPERATION;
using android::NO_INIT;
using android::OK;
using android::PixelFormat;
using android::sp;
using android::status_t;
using android::TIMED_OUT;

namespace {

/** What a client may ask for at most; the queue's own limit holds besides. */
constexpr int kMaxDequeuedLimit = 64;
/** Until the producer says otherwise. */
constexpr uint32_t kDefaultSide = 1;
constexpr PixelFormat kDefaultFormat = HAL_PIXEL_FORMAT_RGBA_8888;
/** The consumer is an encoder, which reads one picture while the next is drawn. */
constexpr uint64_t kConsumerUsage = GRALLOC_USAGE_HW_VIDEO_ENCODER;
constexpr int kConsumerKeeps = 1;
constexpr int64_t kNsPerUs = 1000;

bool isKnownApi(int api) { return api >= NATIVE_WINDOW_API_EGL && api <= NATIVE_WINDOW_API_CAMERA; }

}  // namespace

bool BufferQueue::Geometry::fits(const GraphicBuffer& buffer) const {
    return buffer.getWidth() == width && buffer.getHeight() == height && buffer.getPixelFormat() == format &&
           (buffer.getUsage() & usage) == usage;
}

BufferQueue::BufferQueue(int maxBuffers) : mMaxBuffers(static_cast<size_t>(std::max(maxBuffers, 1))) {}

void BufferQueue::setFrameListener(std::function<void()> onFrameQueued) {
    const std::lock_guard<std::mutex> guard(mLock);
    // Swapped, so that what the old one keeps alive is destroyed by the caller's scope, after the lock.
    mOnFrameQueued.swap(onFrameQueued);
}

sp<GraphicBuffer> BufferQueue::acquire(QueueBufferInput* outInput) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mFrames.empty()) return nullptr;
    const Frame frame = std::move(mFrames.front());
    mFrames.pop_front();
    find(frame.buffer, Owner::kFrame)->owner = Owner::kConsumer;
    if (outInput != nullptr) *outInput = frame.input;
    return frame.buffer;
}

void BufferQueue::release(const sp<GraphicBuffer>& buffer) {
    const std::lock_guard<std::mutex> guard(mLock);
    Slot* const slot = find(buffer, Owner::kConsumer);
    if (slot == nullptr) {
        if (!mAbandoned) ALOGE("release of a buffer that is not acquired");
        return;
    }
    slot->owner = Owner::kQueue;
    mRoom.notify_all();
}

void BufferQueue::abandon() {
    std::function<void()> dropped;
    const std::lock_guard<std::mutex> guard(mLock);
    mAbandoned = true;
    mOnFrameQueued.swap(dropped);
    mFrames.clear();
    mSlots.clear();
    mRoom.notify_all();
}

status_t BufferQueue::setMaxDequeuedBufferCount(int maxDequeuedBuffers) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    if (maxDequeuedBuffers < 1 || maxDequeuedBuffers > kMaxDequeuedLimit) return BAD_VALUE;
    if (maxDequeuedBuffers < countOf(Owner::kProducer)) return BAD_VALUE;
    mMaxDequeued = maxDequeuedBuffers;
    return OK;
}

status_t BufferQueue::setAsyncMode(bool async) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    mAsync = async;
    return OK;
}

status_t BufferQueue::setDequeueTimeout(nsecs_t timeout) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    mDequeueTimeout = timeout;
    return OK;
}

status_t BufferQueue::dequeueBuffer(sp<GraphicBuffer>* outBuffer, uint32_t width, uint32_t height, PixelFormat format,
                                    uint64_t usage) {
    if (outBuffer == nullptr || (width == 0) != (height == 0)) return BAD_VALUE;
    const Geometry geometry = {width == 0 ? kDefaultSide : width, height == 0 ? kDefaultSide : height,
                               format == 0 ? kDefaultFormat : format, usage | kConsumerUsage};
    std::unique_lock<std::mutex> guard(mLock);
    const status_t ready = waitForRoom(guard);
    return ready == OK ? takeBuffer(geometry, outBuffer) : ready;
}

status_t BufferQueue::waitForRoom(std::unique_lock<std::mutex>& guard) {
    if (!isUsable()) return NO_INIT;
    // Waiting would not help: the producer itself has to give one back.
    if (countOf(Owner::kProducer) >= mMaxDequeued) return INVALID_OPERATION;
    const int64_t timeoutUs = mDequeueTimeout < 0 ? -1 : mDequeueTimeout / kNsPerUs;
    const bool ready = Clock::instance().waitFor(mRoom, guard, timeoutUs, [this] { return !isUsable() || hasRoom(); });
    if (!isUsable()) return NO_INIT;
    if (!ready) return TIMED_OUT;
    // Another thread of the producer may have taken one meanwhile.
    return countOf(Owner::kProducer) >= mMaxDequeued ? INVALID_OPERATION : OK;
}

status_t BufferQueue::takeBuffer(const Geometry& geometry, sp<GraphicBuffer>* outBuffer) {
    Slot* slot = findFree(&geometry);
    if (slot == nullptr) {
        const sp<GraphicBuffer> made = new GraphicBuffer(geometry.width, geometry.height, geometry.format,
                                                         1 /* layer */, geometry.usage, "BufferQueue");
        if (made->initCheck() != OK) return made->initCheck();
        slot = findFree(nullptr);  // of another geometry: replaced
        if (slot == nullptr) slot = &mSlots.emplace_back();
        slot->buffer = made;
    }
    slot->owner = Owner::kProducer;
    *outBuffer = slot->buffer;
    return OK;
}

status_t BufferQueue::queueBuffer(const sp<GraphicBuffer>& buffer, const QueueBufferInput& input) {
    std::unique_lock<std::mutex> guard(mLock);
    if (!isUsable()) return NO_INIT;
    Slot* const slot = find(buffer, Owner::kProducer);
    if (slot == nullptr) return BAD_VALUE;
    if (mAsync) dropWaitingFrames();
    slot->owner = Owner::kFrame;
    mFrames.push_back({buffer, input});
    if (input.isAutoTimestamp) mFrames.back().input.timestamp = Clock::instance().nowUs() * kNsPerUs;
    const std::function<void()> onFrameQueued = mOnFrameQueued;
    guard.unlock();
    if (onFrameQueued) onFrameQueued();
    return OK;
}

status_t BufferQueue::cancelBuffer(const sp<GraphicBuffer>& buffer) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (!isUsable()) return NO_INIT;
    Slot* const slot = find(buffer, Owner::kProducer);
    if (slot == nullptr) return BAD_VALUE;
    slot->owner = Owner::kQueue;
    mRoom.notify_all();
    return OK;
}

int BufferQueue::query(int what, int* value) {
    if (value == nullptr) return BAD_VALUE;
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    switch (what) {
        case NATIVE_WINDOW_WIDTH:
        case NATIVE_WINDOW_HEIGHT:
            *value = kDefaultSide;
            return OK;
        case NATIVE_WINDOW_FORMAT:
            *value = kDefaultFormat;
            return OK;
        case NATIVE_WINDOW_MIN_UNDEQUEUED_BUFFERS:
            *value = kConsumerKeeps;
            return OK;
        case NATIVE_WINDOW_CONSUMER_USAGE_BITS:
            *value = static_cast<int>(kConsumerUsage);
            return OK;
        default:
            return BAD_VALUE;
    }
}

status_t BufferQueue::connect(int api) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    if (!isKnownApi(api) || mConnectedApi != 0) return BAD_VALUE;
    mConnectedApi = api;
    return OK;
}

status_t BufferQueue::disconnect(int api, DisconnectMode mode) {
    const std::lock_guard<std::mutex> guard(mLock);
    // An abandoned queue can still be left in good order, so that is not looked at.
    if (mConnectedApi == 0) return BAD_VALUE;
    if (mode == DisconnectMode::Api && api != mConnectedApi) return BAD_VALUE;
    mConnectedApi = 0;
    eraseSlotsOf(Owner::kProducer);
    eraseSlotsOf(Owner::kQueue);
    mRoom.notify_all();
    return OK;
}

bool BufferQueue::hasRoom() const { return mSlots.size() < mMaxBuffers || countOf(Owner::kQueue) > 0; }

int BufferQueue::countOf(Owner owner) const {
    return static_cast<int>(
            std::count_if(mSlots.begin(), mSlots.end(), [owner](const Slot& slot) { return slot.owner == owner; }));
}

BufferQueue::Slot* BufferQueue::find(const sp<GraphicBuffer>& buffer, Owner owner) {
    for (Slot& slot : mSlots) {
        if (slot.buffer == buffer && slot.owner == owner) return &slot;
    }
    return nullptr;
}

BufferQueue::Slot* BufferQueue::findFree(const Geometry* geometry) {
    for (Slot& slot : mSlots) {
        if (slot.owner == Owner::kQueue && (geometry == nullptr || geometry->fits(*slot.buffer))) return &slot;
    }
    return nullptr;
}

void BufferQueue::eraseSlotsOf(Owner owner) {
    mSlots.erase(
            std::remove_if(mSlots.begin(), mSlots.end(), [owner](const Slot& slot) { return slot.owner == owner; }),
            mSlots.end());
}

void BufferQueue::dropWaitingFrames() {
    for (const Frame& frame : mFrames) find(frame.buffer, Owner::kFrame)->owner = Owner::kQueue;
    mFrames.clear();
    mRoom.notify_all();
}

}  // namespace quill::host
