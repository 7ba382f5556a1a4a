#pragma once

#include <media/stagefright/foundation/ALooper.h>
#include <utils/RefBase.h>

namespace android {

struct AMessage;

/** The receiver of messages. A looper holds only a weak reference to it. */
struct AHandler : public RefBase {
    AHandler() = default;

    /** 0 until registered. */
    ALooper::handler_id id() const { return mID; }
    wp<ALooper> getLooper() const { return mLooper; }
    wp<AHandler> getHandler() const { return const_cast<AHandler*>(this); }

  protected:
    /** Called on the looper's thread. */
    virtual void onMessageReceived(const sp<AMessage>& msg) = 0;

  private:
    friend struct ALooper;
    friend struct AMessage;

    void bind(ALooper::handler_id id, const wp<ALooper>& looper) {
        mID = id;
        mLooper = looper;
    }

    ALooper::handler_id mID = 0;
    wp<ALooper> mLooper;

    DISALLOW_EVIL_CONSTRUCTORS(AHandler);
};

}  // namespace android
