#define LOG_TAG "Surface"

#include <gui/Surface.h>

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include <log/log.h>

#include "Clock.h"
#include "Faults.h"

namespace android {

using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;

namespace {

constexpr int kNoFence = -1;
/** A fence that is late by this much is a bug of whoever made it; going on is better than hanging for ever. */
constexpr int kFenceTimeoutMs = 3000;
constexpr uint64_t kCpuUsage = GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN;

/** Owns a fence: a descriptor that becomes readable when the producer's writes are done. */
class Fence {
  public:
    explicit Fence(int fd) : mFd(fd) {}
    ~Fence() {
        if (mFd >= 0) close(mFd);
    }
    Fence(const Fence&) = delete;
    Fence& operator=(const Fence&) = delete;

    void wait() const {
        if (mFd < 0) return;
        pollfd waited = {mFd, POLLIN, 0};
        const double wallMs = std::min(kFenceTimeoutMs * Clock::instance().scale(), 1000.0 * kFenceTimeoutMs);
        int ready;
        do {
            ready = poll(&waited, 1, static_cast<int>(wallMs));
        } while (ready < 0 && errno == EINTR);
        if (ready == 0)
            ALOGW("fence %d is not signalled after %d ms: its buffer is used as it is", mFd, kFenceTimeoutMs);
    }

  private:
    const int mFd;
};

}  // namespace

sp<IGraphicBufferProducer> Surface::getIGraphicBufferProducer() const { return mProducer; }

bool Surface::isValid(const sp<Surface>& surface) { return surface != nullptr && surface->mProducer != nullptr; }

Surface::~Surface() {
    if (mProducer != nullptr && mConnectedApi != 0) mProducer->disconnect(mConnectedApi);
}

int Surface::setMaxDequeuedBufferCount(int maxDequeuedBuffers) {
    if (const auto status = Faults::instance().statusAt("Surface::setMaxDequeuedBufferCount")) return *status;
    return mProducer == nullptr ? NO_INIT : mProducer->setMaxDequeuedBufferCount(maxDequeuedBuffers);
}

int Surface::setAsyncMode(bool async) {
    if (const auto status = Faults::instance().statusAt("Surface::setAsyncMode")) return *status;
    return mProducer == nullptr ? NO_INIT : mProducer->setAsyncMode(async);
}

status_t Surface::setDequeueTimeout(nsecs_t timeout) {
    if (const auto status = Faults::instance().statusAt("Surface::setDequeueTimeout")) return *status;
    return mProducer == nullptr ? NO_INIT : mProducer->setDequeueTimeout(timeout);
}

int Surface::setScalingMode(int mode) {
    if (mode < NATIVE_WINDOW_SCALING_MODE_FREEZE || mode > NATIVE_WINDOW_SCALING_MODE_NO_SCALE_CROP) return BAD_VALUE;
    const std::lock_guard<std::mutex> guard(mLock);
    mFrameSettings.scalingMode = mode;
    return OK;
}

int Surface::setBuffersDimensions(uint32_t width, uint32_t height) {
    if ((width == 0) != (height == 0)) return BAD_VALUE;
    const std::lock_guard<std::mutex> guard(mLock);
    mRequest.width = width;
    mRequest.height = height;
    return OK;
}

int Surface::setBuffersFormat(PixelFormat format) {
    const std::lock_guard<std::mutex> guard(mLock);
    mRequest.format = format;
    return OK;
}

int Surface::setUsage(uint64_t usage) {
    const std::lock_guard<std::mutex> guard(mLock);
    mRequest.usage = usage;
    return OK;
}

int Surface::query(int what, int* value) const {
    if (mProducer == nullptr) return NO_INIT;
    const int queried = mProducer->query(what, value);
    if (queried != OK) return queried;
    const Request wanted = request();
    if (what == NATIVE_WINDOW_WIDTH && wanted.width != 0) *value = static_cast<int>(wanted.width);
    if (what == NATIVE_WINDOW_HEIGHT && wanted.height != 0) *value = static_cast<int>(wanted.height);
    if (what == NATIVE_WINDOW_FORMAT && wanted.format != 0) *value = wanted.format;
    return OK;
}

int Surface::setBufferCount(int bufferCount) {
    if (mProducer == nullptr) return NO_INIT;
    if (bufferCount == 0) return mProducer->setMaxDequeuedBufferCount(1);  // back to the default
    int consumerKeeps = 0;
    const int queried = mProducer->query(NATIVE_WINDOW_MIN_UNDEQUEUED_BUFFERS, &consumerKeeps);
    return queried != OK ? queried : mProducer->setMaxDequeuedBufferCount(bufferCount - consumerKeeps);
}

int Surface::setSwapInterval(int interval) {
    if (mProducer == nullptr) return NO_INIT;
    return mProducer->setAsyncMode(interval <= 0);  // there is no display to wait more than one frame for
}

int Surface::connect(int api) {
    if (mProducer == nullptr) return NO_INIT;
    const status_t connected = mProducer->connect(api);
    if (connected != OK) return connected;
    const std::lock_guard<std::mutex> guard(mLock);
    mConnectedApi = api;
    return OK;
}

int Surface::disconnect(int api, IGraphicBufferProducer::DisconnectMode mode) {
    if (mProducer == nullptr) return NO_INIT;
    const status_t disconnected = mProducer->disconnect(api, mode);
    if (disconnected != OK) return disconnected;
    const std::lock_guard<std::mutex> guard(mLock);
    mConnectedApi = 0;
    mDequeued.clear();
    mLockedBuffer = nullptr;
    return OK;
}

int Surface::dequeueBuffer(ANativeWindowBuffer** buffer, int* fenceFd) {
    const std::optional<Fault> fault = Faults::instance().at("ANativeWindow::dequeueBuffer");
    if (fault && fault->kind == Fault::Kind::kStatus) return fault->status;
    if (buffer == nullptr || fenceFd == nullptr) return BAD_VALUE;
    if (mProducer == nullptr) return NO_INIT;
    const Request wanted = request();
    sp<GraphicBuffer> dequeued;
    const status_t err = mProducer->dequeueBuffer(&dequeued, wanted.width, wanted.height, wanted.format, wanted.usage);
    if (err != OK) return err;
    *buffer = dequeued->getNativeBuffer();
    *fenceFd = kNoFence;  // the consumer is done with a buffer before it releases it
    if (fault && fault->kind == Fault::Kind::kNothing) *buffer = nullptr;
    if (fault && fault->kind == Fault::Kind::kShortBuffer) dequeued->width = static_cast<int>(fault->size);
    const std::lock_guard<std::mutex> guard(mLock);
    mDequeued.push_back(dequeued);
    return OK;
}

int Surface::queueBuffer(ANativeWindowBuffer* buffer, int fenceFd) {
    const Fence fence(fenceFd);
    if (const auto status = Faults::instance().statusAt("ANativeWindow::queueBuffer")) return *status;
    const sp<GraphicBuffer> queued = findDequeued(buffer);
    if (queued == nullptr) return BAD_VALUE;
    fence.wait();
    std::unique_lock<std::mutex> guard(mLock);
    const IGraphicBufferProducer::QueueBufferInput input = mFrameSettings;
    guard.unlock();
    const status_t err = mProducer->queueBuffer(queued, input);
    if (err == OK) forgetDequeued(queued);
    return err;
}

int Surface::cancelBuffer(ANativeWindowBuffer* buffer, int fenceFd) {
    const Fence fence(fenceFd);
    if (const auto status = Faults::instance().statusAt("ANativeWindow::cancelBuffer")) return *status;
    const sp<GraphicBuffer> cancelled = findDequeued(buffer);
    if (cancelled == nullptr) return BAD_VALUE;
    fence.wait();
    const status_t err = mProducer->cancelBuffer(cancelled);
    if (err == OK) forgetDequeued(cancelled);
    return err;
}

int Surface::lock(ANativeWindow_Buffer* outBuffer, ARect* inOutDirtyBounds) {
    if (outBuffer == nullptr) return BAD_VALUE;
    int err = connectCpuForLock();
    if (err != OK) return err;
    setUsage(kCpuUsage);
    ANativeWindowBuffer* dequeued = nullptr;
    int fenceFd = kNoFence;
    err = dequeueBuffer(&dequeued, &fenceFd);
    if (err != OK) return err;
    const Fence fence(fenceFd);
    fence.wait();
    const sp<GraphicBuffer> buffer = GraphicBuffer::from(dequeued);
    void* bits = nullptr;
    err = buffer->lock(static_cast<uint32_t>(kCpuUsage), &bits);
    if (err != OK) {
        cancelBuffer(dequeued, kNoFence);
        return err;
    }
    *outBuffer = {dequeued->width, dequeued->height, dequeued->stride, dequeued->format, bits, {}};
    if (inOutDirtyBounds != nullptr) *inOutDirtyBounds = {0, 0, dequeued->width, dequeued->height};
    const std::lock_guard<std::mutex> guard(mLock);
    mLockedBuffer = buffer;
    return OK;
}

int Surface::connectCpuForLock() {
    std::unique_lock<std::mutex> guard(mLock);
    if (mLockedBuffer != nullptr) return INVALID_OPERATION;
    if (mConnectedApi == NATIVE_WINDOW_API_CPU) return OK;
    guard.unlock();
    return connect(NATIVE_WINDOW_API_CPU);
}

int Surface::unlockAndPost() {
    std::unique_lock<std::mutex> guard(mLock);
    const sp<GraphicBuffer> buffer = mLockedBuffer;
    mLockedBuffer = nullptr;
    guard.unlock();
    if (buffer == nullptr) return INVALID_OPERATION;
    const status_t unlocked = buffer->unlock();
    const int queued = queueBuffer(buffer->getNativeBuffer(), kNoFence);
    return queued != OK ? queued : unlocked;
}

sp<GraphicBuffer> Surface::findDequeued(const ANativeWindowBuffer* buffer) const {
    const std::lock_guard<std::mutex> guard(mLock);
    for (const sp<GraphicBuffer>& dequeued : mDequeued) {
        if (dequeued->getNativeBuffer() == buffer) return dequeued;
    }
    return nullptr;
}

void Surface::forgetDequeued(const sp<GraphicBuffer>& buffer) {
    const std::lock_guard<std::mutex> guard(mLock);
    const auto found = std::find(mDequeued.begin(), mDequeued.end(), buffer);
    if (found != mDequeued.end()) mDequeued.erase(found);
}

Surface::Request Surface::request() const {
    const std::lock_guard<std::mutex> guard(mLock);
    return mRequest;
}

}  // namespace android
