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
 * What a looper and its thread share: the messages by due time, and the loop that delivers them. It is an object
 * of its own because a handler may drop the last reference to the looper on the looper's very thread.
 * Thread-safe. Messages are released outside the lock: what they hold may call back.
 */
class LooperQueue : public std::enable_shared_from_this<LooperQueue> {
  public:
    using Message = android::sp<android::AMessage>;

    ~LooperQueue();

    /** Both return INVALID_OPERATION while the loop runs. */
    android::status_t startThread(const std::string& name);
    android::status_t runOnCallingThread();
    /** The contract of `ALooper::stop`. */
    android::status_t stop();

    /** Delivers after `delayUs`; with a `token`, in place of what is queued with the same one. */
    void post(const Message& message, int64_t delayUs, const android::sp<android::RefBase>& token = nullptr);
    /** The contracts of `AMessage::postAndAwaitResponse` and `postReply`. */
    android::status_t request(const Message& message, Message* response);
    android::status_t reply(const android::sp<android::AReplyToken>& token, const Message& message);

    void addHandler(android::ALooper::handler_id id, const android::wp<android::AHandler>& handler);
    /** Null when there is none of that id, or it is gone. */
    android::sp<android::AHandler> removeHandler(android::ALooper::handler_id id);

  private:
    enum class Phase { kIdle, kRunning, kStopping };
    struct Event {
        Message message;
        android::sp<android::RefBase> token;
    };
    // Equal due times keep the order of insertion.
    using Events = std::multimap<int64_t, Event>;

    void begin(std::thread::id runner);
    void run();
    void deliver(const Message& message);
    Event next();
    int64_t waitUs() const;
    void add(const Message& message, int64_t delayUs, const android::sp<android::RefBase>& token);
    void joinFinished(std::unique_lock<std::mutex>& lock);

    std::mutex mLock;
    std::condition_variable mWake;     // for the loop: new messages, stop
    std::condition_variable mChanged;  // for everybody else: replies, the loop's end
    Phase mPhase = Phase::kIdle;
    uint64_t mRuns = 0;
    uint64_t mPosts = 0;
    std::thread mThread;
    std::thread::id mRunner;
    Events mEvents;
    std::map<android::ALooper::handler_id, android::wp<android::AHandler>> mHandlers;
};

}  // namespace quill::host
