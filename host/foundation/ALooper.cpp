#define LOG_TAG "ALooper"
#include <media/stagefright/foundation/ALooper.h>

#include <log/log.h>
#include <media/stagefright/foundation/AHandler.h>

#include <atomic>

#include "CallLog.h"
#include "Faults.h"
#include "LooperQueue.h"

namespace android {

using quill::host::Faults;

namespace {

ALooper::handler_id nextHandlerId() {
    static std::atomic<ALooper::handler_id> last{0};
    return ++last;
}

}  // namespace

ALooper::ALooper() : mName("ALooper"), mQueue(std::make_shared<quill::host::LooperQueue>()) {}

ALooper::~ALooper() { mQueue->stop(); }

void ALooper::setName(const char* name) { mName = name; }

ALooper::handler_id ALooper::registerHandler(const sp<AHandler>& handler) {
    if (const auto status = Faults::instance().statusAt("ALooper::registerHandler")) return *status;
    if (handler->id() != 0) {
        ALOGE("The handler is registered already, with id %d", handler->id());
        return INVALID_OPERATION;
    }
    const handler_id id = nextHandlerId();
    handler->bind(id, this);
    mQueue->addHandler(id, handler);
    return id;
}

void ALooper::unregisterHandler(handler_id handlerID) {
    const sp<AHandler> handler = mQueue->removeHandler(handlerID);
    if (handler != nullptr) handler->bind(0, nullptr);
}

status_t ALooper::start(bool runOnCallingThread, bool canCallJava, int32_t priority) {
    quill::host::CallLog::instance().note("ALooper::start", {runOnCallingThread, canCallJava, priority});
    if (const auto status = Faults::instance().statusAt("ALooper::start")) return *status;
    return runOnCallingThread ? INVALID_OPERATION : mQueue->start(mName.c_str());
}

status_t ALooper::stop() {
    if (const auto status = Faults::instance().statusAt("ALooper::stop")) return *status;
    return mQueue->stop();
}

}  // namespace android
