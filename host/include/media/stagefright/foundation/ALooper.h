#pragma once

#include <stdint.h>

#include <memory>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/ThreadDefs.h>

namespace quill::host {
class LooperQueue;
}

namespace android {

struct AHandler;
struct AMessage;

/**
 * A thread that hands messages to handlers, one at a time, by due time. Messages with the same due time keep the order
 * in which they were posted. Thread-safe except for `setName`.
 */
struct ALooper : public RefBase {
    typedef int32_t event_id;
    typedef int32_t handler_id;

    ALooper();

    /** Takes effect at the next `start`. The system keeps the first 15 bytes as the thread's name. */
    void setName(const char* name);

    /**
     * Binds `handler`. The looper holds a weak reference to it, and drops messages to a handler that is gone. Returns
     * its id (above 0), or INVALID_OPERATION if it is bound to a looper already.
     */
    handler_id registerHandler(const sp<AHandler>& handler);
    /** Messages that are queued already still arrive. An unknown id is ignored. */
    void unregisterHandler(handler_id handlerID);

    /**
     * Starts the thread and delivers what was posted before. INVALID_OPERATION if it runs already, and for
     * `runOnCallingThread`, which this platform does not have. `canCallJava` and `priority` change nothing: a handler
     * attaches its thread to Java itself, and an ordinary user may not raise a thread's priority.
     */
    status_t start(bool runOnCallingThread = false, bool canCallJava = false, int32_t priority = PRIORITY_DEFAULT);

    /**
     * Drops what is still queued and waits for the thread. Called on that thread it does not wait: the loop ends after
     * the current message. INVALID_OPERATION if the looper does not run.
     */
    status_t stop();

  protected:
    ~ALooper() override;

  private:
    friend struct AMessage;

    AString mName;
    const std::shared_ptr<quill::host::LooperQueue> mQueue;  // shared with the thread, which may outlive this

    DISALLOW_EVIL_CONSTRUCTORS(ALooper);
};

}  // namespace android
