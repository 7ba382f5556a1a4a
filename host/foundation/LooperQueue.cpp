#define LOG_TAG "ALooper"
#include "LooperQueue.h"

#include <errno.h>
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
// Longer waits are made of several: however time is scaled, this many microseconds can be counted in nanoseconds.
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

status_t LooperQueue::startThread(const std::string& name) {
    std::unique_lock<std::mutex> lock(mLock);
    if (mPhase != Phase::kIdle) return INVALID_OPERATION;
    joinFinished(lock);
    if (mPhase != Phase::kIdle) return INVALID_OPERATION;
    try {
        mThread = std::thread([self = shared_from_this(), name = name.substr(0, kThreadNameMax)] {
            pthread_setname_np(pthread_self(), name.c_str());
            self->run();
        });
    } catch (const std::system_error& error) {
        ALOGE("no thread for looper %s: %s", name.c_str(), error.what());
        return NO_MEMORY;
    }
    begin(mThread.get_id());
    return OK;
}

status_t LooperQueue::runOnCallingThread() {
    {
        const std::lock_guard<std::mutex> lock(mLock);
        if (mPhase != Phase::kIdle) return INVALID_OPERATION;
        begin(std::this_thread::get_id());
    }
    run();
    return OK;
}

void LooperQueue::begin(std::thread::id runner) {
    mPhase = Phase::kRunning;
    mRunner = runner;
    ++mRuns;
}

void LooperQueue::run() {
    for (Event event = next(); event.message != nullptr; event = next()) {
        deliver(event.message);
        event = {};  // what it holds must not wait for the next message to come
    }
    const std::lock_guard<std::mutex> lock(mLock);
    mPhase = Phase::kIdle;
    mRunner = {};
    mChanged.notify_all();
}

void LooperQueue::deliver(const Message& message) {
    if (message->deliver()) return;
    // Nobody is there any more to reply: whoever waits for it must not do so for ever.
    sp<android::AReplyToken> token;
    if (message->senderAwaitsResponse(&token)) reply(token, nullptr);
}

/** Without a message once the loop has to end. */
LooperQueue::Event LooperQueue::next() {
    std::unique_lock<std::mutex> lock(mLock);
    while (mPhase == Phase::kRunning) {
        const int64_t wait = waitUs();
        if (wait == 0) return std::move(mEvents.extract(mEvents.begin()).mapped());
        const uint64_t seen = mPosts;
        Clock::instance().waitFor(mWake, lock, wait, [&] { return mPhase != Phase::kRunning || mPosts != seen; });
    }
    return {};
}

int64_t LooperQueue::waitUs() const {
    if (mEvents.empty()) return kForever;
    const int64_t untilDue = mEvents.begin()->first - Clock::instance().nowUs();
    return std::clamp<int64_t>(untilDue, 0, kLongestWaitUs);
}

status_t LooperQueue::stop() {
    Events dropped;
    std::unique_lock<std::mutex> lock(mLock);
    if (mPhase == Phase::kIdle) {
        joinFinished(lock);
        return INVALID_OPERATION;
    }
    mPhase = Phase::kStopping;
    dropped.swap(mEvents);
    mWake.notify_all();
    mChanged.notify_all();
    if (mRunner == std::this_thread::get_id()) return OK;
    const uint64_t run = mRuns;
    Clock::instance().waitFor(mChanged, lock, kForever, [&] { return mPhase == Phase::kIdle || mRuns != run; });
    joinFinished(lock);
    return OK;
}

/** Lets the lock go meanwhile. A thread that stopped its own loop is left for others to join. */
void LooperQueue::joinFinished(std::unique_lock<std::mutex>& lock) {
    if (mPhase != Phase::kIdle || !mThread.joinable() || mThread.get_id() == std::this_thread::get_id()) return;
    std::thread finished = std::move(mThread);
    lock.unlock();
    finished.join();
    lock.lock();
}

void LooperQueue::post(const Message& message, int64_t delayUs, const sp<android::RefBase>& token) {
    Events replaced;
    const std::lock_guard<std::mutex> lock(mLock);
    if (token != nullptr) {
        for (auto event = mEvents.begin(); event != mEvents.end();) {
            const auto current = event++;
            if (current->second.token == token) replaced.insert(mEvents.extract(current));
        }
    }
    add(message, delayUs, token);
}

void LooperQueue::add(const Message& message, int64_t delayUs, const sp<android::RefBase>& token) {
    if (mPhase == Phase::kStopping) return;
    mEvents.emplace(dueTime(delayUs), Event{message, token});
    ++mPosts;
    mWake.notify_all();
}

status_t LooperQueue::request(const Message& message, Message* response) {
    const sp<android::AReplyToken> token = new android::AReplyToken(shared_from_this());
    std::unique_lock<std::mutex> lock(mLock);
    if (mPhase != Phase::kRunning) return -ENOENT;
    if (mRunner == std::this_thread::get_id()) {
        ALOGE("a request to this thread's own looper would wait for ever");
        return INVALID_OPERATION;
    }
    message->mReplyToken = token;
    add(message, 0 /* delayUs */, nullptr);
    const uint64_t run = mRuns;
    Clock::instance().waitFor(mChanged, lock, kForever,
                              [&] { return token->mReplied || mPhase != Phase::kRunning || mRuns != run; });
    if (token->mReply == nullptr) return -ENOENT;
    *response = token->mReply;
    token->mReply.clear();
    return OK;
}

status_t LooperQueue::reply(const sp<android::AReplyToken>& token, const Message& message) {
    const std::lock_guard<std::mutex> lock(mLock);
    if (token->mReplied) return -EBUSY;
    token->mReplied = true;
    token->mReply = message;
    mChanged.notify_all();
    return OK;
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
