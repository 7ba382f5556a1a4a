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
 * A thread that hands messages to handlers, one at a time, in the order they fall due; equally due ones in
 * the order they were posted. Thread-safe except for `setName`.
 */
struct ALooper : public RefBase {
    typedef int32_t event_id;
    typedef int32_t handler_id;

    ALooper();

    /** Takes effect at the next `start`. The system keeps the first 15 bytes as the thread's name. */
    void setName(const char* name);
    const char* getName() const;

    /**
     * Binds `handler`, which the looper references weakly: messages to one that is gone are dropped.
     * Returns its id (above 0), or INVALID_OPERATION when it is bound to a looper already.
     */
    handler_id registerHandler(const sp<AHandler>& handler);
    /** Messages to it that are under way still arrive; an unknown id is ignored. */
    void unregisterHandler(handler_id handlerID);

    /**
     * Starts a thread, or runs on the caller's and returns after `stop`. INVALID_OPERATION when it runs
     * already. Messages posted before are delivered. On a workstation `canCallJava` changes nothing (a handler
     * that calls Java attaches its thread) and `priority` is left to the system: raising it takes rights
     * that an ordinary user lacks.
     */
    status_t start(bool runOnCallingThread = false, bool canCallJava = false, int32_t priority = PRIORITY_DEFAULT);

    /**
     * Drops what is still queued and waits for the thread, except on that thread itself, which ends after the
     * message it is handling. INVALID_OPERATION when it does not run.
     */
    status_t stop();

    /** Monotonic microseconds. */
    static int64_t GetNowUs();

  protected:
    ~ALooper() override;

  private:
    friend struct AMessage;

    AString mName;
    const std::shared_ptr<quill::host::LooperQueue> mQueue;  // shared with the thread, which may outlive this

    DISALLOW_EVIL_CONSTRUCTORS(ALooper);
};

}  // namespace android
