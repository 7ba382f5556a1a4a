#define LOG_TAG "Surface"

#include <gui/Surface.h>

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include <log/log.h>

#include "Clock.h"
#include "Faults.h"

namespace android {

using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;

namespace {

/** How long to wait for a fence. After that the buffer is used as it is. */
constexpr int kFenceTimeoutMs = 3000;

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
        if (ready == 0) ALOGW("Fence %d not signalled after %d ms: its buffer is used as it is", mFd, kFenceTimeoutMs);
    }

  private:
    const int mFd;
};

}  // namespace

Surface::~Surface() {
    if (mProducer != nullptr && mConnectedApi != 0) mProducer->disconnect(mConnectedApi);
}

int Surface::setMaxDequeuedBufferCount(int maxDequeuedBuffers) {
    if (const auto status = Faults::instance().statusAt("Surface::setMaxDequeuedBufferCount")) return *status;
    return mProducer == nullptr ? NO_INIT : mProducer->setMaxDequeuedBufferCount(maxDequeuedBuffers);
}

int Surface::dequeueBuffer(ANativeWindowBuffer** buffer) {
    const std::optional<Fault> fault = Faults::instance().at("ANativeWindow::dequeueBuffer");
    if (fault && fault->kind == Fault::Kind::kStatus) return fault->status;
    if (buffer == nullptr) return BAD_VALUE;
    if (mProducer == nullptr) return NO_INIT;
    std::unique_lock<std::mutex> guard(mLock);
    const Request wanted = mRequest;
    guard.unlock();
    sp<GraphicBuffer> dequeued;
    const status_t err = mProducer->dequeueBuffer(&dequeued, wanted.width, wanted.height, wanted.format, wanted.usage);
    if (err != OK) return err;
    *buffer = dequeued->getNativeBuffer();
    if (fault && fault->kind == Fault::Kind::kNothing) *buffer = nullptr;
    if (fault && fault->kind == Fault::Kind::kShortBuffer) dequeued->width = static_cast<int>(fault->size);
    guard.lock();
    mDequeued.push_back(dequeued);
    return OK;
}

int Surface::queueBuffer(ANativeWindowBuffer* buffer, int fenceFd) {
    const Fence fence(fenceFd);
    if (const auto status = Faults::instance().statusAt("ANativeWindow::queueBuffer")) return *status;
    const sp<GraphicBuffer> queued = findDequeued(buffer);
    if (queued == nullptr) return BAD_VALUE;
    fence.wait();
    const status_t err = mProducer->queueBuffer(queued);
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

}  // namespace android
