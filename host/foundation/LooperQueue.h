#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace quill::host {

/**
 * The messages of a looper by due time, and the loop that delivers them; shared by the looper and its thread, because a
 * handler may drop the last reference to the looper on that very thread. Thread-safe. Messages are released outside the
 * lock, since destroying what they hold may call back.
 */
class LooperQueue : public std::enable_shared_from_this<LooperQueue> {
  public:
    using Message = android::sp<android::AMessage>;

    ~LooperQueue();

    /** INVALID_OPERATION while the loop runs. */
    android::status_t start(const std::string& threadName);
    /** The contract of `ALooper::stop`. */
    android::status_t stop();

    void post(const Message& message, int64_t delayUs);

    void addHandler(android::ALooper::handler_id id, const android::wp<android::AHandler>& handler);
    /** Null if there is none of that id or it is gone. */
    android::sp<android::AHandler> removeHandler(android::ALooper::handler_id id);

  private:
    enum class Phase { kIdle, kRunning, kStopping };
    // Equal due times keep the order of insertion.
    using Messages = std::multimap<int64_t, Message>;

    void run();
    Message next();
    int64_t waitUs() const;
    void joinFinished(std::unique_lock<std::mutex>& lock);

    std::mutex mLock;
    std::condition_variable mWake;   // for the loop: new messages, stop
    std::condition_variable mEnded;  // for `stop`: the end of a loop
    Phase mPhase = Phase::kIdle;
    uint64_t mRuns = 0;
    uint64_t mPosts = 0;
    std::thread mThread;
    Messages mMessages;
    std::map<android::ALooper::handler_id, android::wp<android::AHandler>> mHandlers;
};

}  // namespace quill::host
