#define LOG_TAG "AMessage"
#include <errno.h>
#include <log/log.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>

#include "Faults.h"
#include "LooperQueue.h"

namespace android {

using quill::host::Faults;

AMessage::AMessage(uint32_t what, const sp<const AHandler>& handler) : mWhat(what) {
    if (handler == nullptr) return;
    mTarget = handler->id();
    mHandler = handler->getHandler();
    mLooper = handler->getLooper();
}

status_t AMessage::post(int64_t delayUs) {
    if (const auto status = Faults::instance().statusAt("AMessage::post")) return *status;
    const sp<ALooper> looper = mLooper.promote();
    if (looper == nullptr) {
        ALOGW("Message 0x%08x dropped: its target, handler %d, has no looper", mWhat, mTarget);
        return -ENOENT;
    }
    looper->mQueue->post(this, delayUs);
    return OK;
}

void AMessage::deliver() {
    const sp<AHandler> handler = mHandler.promote();
    if (handler != nullptr) return handler->onMessageReceived(this);
    ALOGW("Message 0x%08x dropped: its target, handler %d, is gone", mWhat, mTarget);
}

}  // namespace android
