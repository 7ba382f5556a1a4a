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

namespace {

/** The most that a client may ask for; the queue's own limit applies as well. */
constexpr int kMaxDequeuedLimit = 64;
/** For a producer that asks for no size or format. */
constexpr uint32_t kDefaultSide = 1;
constexpr PixelFormat kDefaultFormat = HAL_PIXEL_FORMAT_RGBA_8888;
/** The consumer is an encoder. */
constexpr uint64_t kConsumerUsage = GRALLOC_USAGE_HW_VIDEO_ENCODER;

bool isKnownApi(int api) { return api >= NATIVE_WINDOW_API_EGL && api <= NATIVE_WINDOW_API_CAMERA; }

}  // namespace

bool BufferQueue::Geometry::fits(const GraphicBuffer& buffer) const {
    return buffer.getWidth() == width && buffer.getHeight() == height && buffer.getPixelFormat() == format &&
           (buffer.getUsage() & usage) == usage;
}

BufferQueue::BufferQueue(int maxBuffers) : mMaxBuffers(static_cast<size_t>(std::max(maxBuffers, 1))) {}

void BufferQueue::setFrameListener(std::function<void()> onFrameQueued) {
    const std::lock_guard<std::mutex> guard(mLock);
    // Swapped: the caller's scope destroys the old one, after the lock is released.
    mOnFrameQueued.swap(onFrameQueued);
}

sp<GraphicBuffer> BufferQueue::acquire(int64_t* timeUs) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mFrames.empty()) return nullptr;
    const Frame frame = std::move(mFrames.front());
    mFrames.pop_front();
    find(frame.buffer, Owner::kFrame)->owner = Owner::kConsumer;
    if (timeUs != nullptr) *timeUs = frame.timeUs;
    return frame.buffer;
}

void BufferQueue::release(const sp<GraphicBuffer>& buffer) {
    const std::lock_guard<std::mutex> guard(mLock);
    Slot* const slot = find(buffer, Owner::kConsumer);
    if (slot == nullptr) {
        if (!mAbandoned) ALOGE("Released a buffer that is not acquired");
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
    mRoom.wait(guard, [this] { return !isUsable() || hasRoom(); });
    if (!isUsable()) return NO_INIT;
    // Another thread of the producer may have taken one during the wait.
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

status_t BufferQueue::queueBuffer(const sp<GraphicBuffer>& buffer) {
    std::unique_lock<std::mutex> guard(mLock);
    if (!isUsable()) return NO_INIT;
    Slot* const slot = find(buffer, Owner::kProducer);
    if (slot == nullptr) return BAD_VALUE;
    slot->owner = Owner::kFrame;
    mFrames.push_back({buffer, Clock::instance().nowUs()});
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

status_t BufferQueue::connect(int api) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mAbandoned) return NO_INIT;
    if (!isKnownApi(api) || mConnectedApi != 0) return BAD_VALUE;
    mConnectedApi = api;
    return OK;
}

/** Works on an abandoned queue too. */
status_t BufferQueue::disconnect(int api) {
    const std::lock_guard<std::mutex> guard(mLock);
    if (mConnectedApi == 0 || api != mConnectedApi) return BAD_VALUE;
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

}  // namespace quill::host
