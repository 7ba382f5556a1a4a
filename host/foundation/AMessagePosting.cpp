#define LOG_TAG "AMessage"
#include <errno.h>
#include <log/log.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>

#include "Faults.h"
#include "LooperQueue.h"

namespace android {

using quill::host::Faults;
using quill::host::LooperQueue;

void AMessage::setTarget(const sp<const AHandler>& handler) {
    const bool has = handler != nullptr;
    mTarget = has ? handler->id() : 0;
    mHandler = has ? handler->getHandler() : wp<AHandler>();
    mLooper = has ? handler->getLooper() : wp<ALooper>();
}

std::shared_ptr<LooperQueue> AMessage::targetQueue() const {
    const sp<ALooper> looper = mLooper.promote();
    if (looper == nullptr) {
        ALOGW("message 0x%08x is dropped: its target, handler %d, has no looper", mWhat, mTarget);
        return nullptr;
    }
    return looper->mQueue;
}

status_t AMessage::post(int64_t delayUs) {
    if (const auto status = Faults::instance().statusAt("AMessage::post")) return *status;
    const std::shared_ptr<LooperQueue> queue = targetQueue();
    if (queue == nullptr) return -ENOENT;
    queue->post(this, delayUs);
    return OK;
}

status_t AMessage::postUnique(const sp<RefBase>& token, int64_t delayUs) {
    if (const auto status = Faults::instance().statusAt("AMessage::postUnique")) return *status;
    if (token == nullptr) return BAD_VALUE;
    const std::shared_ptr<LooperQueue> queue = targetQueue();
    if (queue == nullptr) return -ENOENT;
    queue->post(this, delayUs, token);
    return OK;
}

status_t AMessage::postAndAwaitResponse(sp<AMessage>* response) {
    if (const auto status = Faults::instance().statusAt("AMessage::postAndAwaitResponse")) return *status;
    const std::shared_ptr<LooperQueue> queue = targetQueue();
    if (queue == nullptr) return -ENOENT;
    return queue->request(this, response);
}

bool AMessage::senderAwaitsResponse(sp<AReplyToken>* replyID) {
    *replyID = mReplyToken;
    mReplyToken.clear();
    return *replyID != nullptr;
}

status_t AMessage::postReply(const sp<AReplyToken>& replyID) {
    if (const auto status = Faults::instance().statusAt("AMessage::postReply")) return *status;
    if (replyID == nullptr) {
        ALOGW("a reply without a token is dropped");
        return -ENOENT;
    }
    const std::shared_ptr<LooperQueue> queue = replyID->mQueue.lock();
    return queue == nullptr ? -ENOENT : queue->reply(replyID, this);
}

bool AMessage::deliver() {
    const sp<AHandler> handler = mHandler.promote();
    if (handler == nullptr) {
        ALOGW("message 0x%08x is dropped: its target, handler %d, is gone", mWhat, mTarget);
        return false;
    }
    handler->onMessageReceived(this);
    return true;
}

}  // namespace android
