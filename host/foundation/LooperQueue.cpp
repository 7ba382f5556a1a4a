#define LOG_TAG "ALooper"
#include "LooperQueue.h"

#include <log/log.h>
#include <pthread.h>

#include <algorithm>
#include <limits>
#include <system_error>

#include "Clock.h"

namespace quill::host {

using android::INVALID_OPERATION;
using android::NO_MEMORY;
using android::OK;
using android::sp;
using android::status_t;

namespace {

// The system's limit on thread names, without the final NUL.
constexpr size_t kThreadNameMax = 15;
// Longer waits are split: in nanoseconds, and stretched by the clock, they could exceed 64 bits.
constexpr int64_t kLongestWaitUs = 60'000'000;
constexpr int64_t kForever = -1;

int64_t dueTime(int64_t delayUs) {
    const int64_t now = Clock::instance().nowUs();
    if (delayUs <= 0) return now;
    return delayUs > std::numeric_limits<int64_t>::max() - now ? std::numeric_limits<int64_t>::max() : now + delayUs;
}

}  // namespace

LooperQueue::~LooperQueue() {
    if (!mThread.joinable()) return;
    // The thread itself may hold the last reference.
    if (mThread.get_id() == std::this_thread::get_id()) {
        mThread.detach();
    } else {
        mThread.join();
    }
}

status_t LooperQueue::start(const std::string& threadName) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mPhase != Phase::kIdle) return INVALID_OPERATION;
    joinFinished(lock);
    if (mPhase != Phase::kIdle) return INVALID_OPERATION;
    try {
        mThread = std::thread([self = shared_from_this(), name = threadName.substr(0, kThreadNameMax)] {
            pthread_setname_np(pthread_self(), name.c_str());
            self->run();
        });
    } catch (const std::system_error& error) {
        ALOGE("Cannot start a thread for looper %s: %s", threadName.c_str(), error.what());
        return NO_MEMORY;
    }
    mPhase = Phase::kRunning;
    ++mRuns;
    return OK;
}

void LooperQueue::run() {
    for (Message message = next(); message != nullptr;) {
        message->deliver();
        message.clear();  // before waiting for the next one
        message = next();
    }
    const std::lock_guard<std::mutex> lock(mLock);
    mPhase = Phase::kIdle;
    mEnded.notify_all();
}

/** Null once the loop must end. */
LooperQueue::Message LooperQueue::next() {
    std::unique_lock<std::mutex> lock(mLock);
    while (mPhase == Phase::kRunning) {
        const int64_t wait = waitUs();
        if (wait == 0) return std::move(mMessages.extract(mMessages.begin()).mapped());
        const uint64_t seen = mPosts;
        Clock::instance().waitFor(mWake, lock, wait, [&] { return mPhase != Phase::kRunning || mPosts != seen; });
    }
    return nullptr;
}

int64_t LooperQueue::waitUs() const {
    if (mMessages.empty()) return kForever;
    const int64_t untilDue = mMessages.begin()->first - Clock::instance().nowUs();
    return std::clamp<int64_t>(untilDue, 0, kLongestWaitUs);
}

status_t LooperQueue::stop() {
    Messages dropped;
    std::unique_lock<std::mutex> lock(mLock);
    if (mPhase == Phase::kIdle) {
        joinFinished(lock);
        return INVALID_OPERATION;
    }
    mPhase = Phase::kStopping;
    dropped.swap(mMessages);
    mWake.notify_all();
    if (mThread.get_id() == std::this_thread::get_id()) return OK;
    const uint64_t run = mRuns;
    Clock::instance().waitFor(mEnded, lock, kForever, [&] { return mPhase == Phase::kIdle || mRuns != run; });
    joinFinished(lock);
    return OK;
}

/** Releases the lock while it joins. A thread that stopped its own loop is left for others to join. */
void LooperQueue::joinFinished(std::unique_lock<std::mutex>& lock) {
    if (mPhase != Phase::kIdle || !mThread.joinable() || mThread.get_id() == std::this_thread::get_id()) return;
    std::thread finished = std::move(mThread);
    lock.unlock();
    finished.join();
    lock.lock();
}

void LooperQueue::post(const Message& message, int64_t delayUs) {
    const std::lock_guard<std::mutex> lock(mLock);
    if (mPhase == Phase::kStopping) return;
    mMessages.emplace(dueTime(delayUs), message);
    ++mPosts;
    mWake.notify_all();
}

void LooperQueue::addHandler(android::ALooper::handler_id id, const android::wp<android::AHandler>& handler) {
    const std::lock_guard<std::mutex> lock(mLock);
    mHandlers[id] = handler;
}

sp<android::AHandler> LooperQueue::removeHandler(android::ALooper::handler_id id) {
    const std::lock_guard<std::mutex> lock(mLock);
    const auto found = mHandlers.find(id);
    if (found == mHandlers.end()) return nullptr;
    sp<android::AHandler> handler = found->second.promote();
    mHandlers.erase(found);
    return handler;
}

}  // namespace quill::host
