// A Surface as an ANativeWindow: its function pointers and the operations behind `perform`.
#include <gui/Surface.h>

#include "CallLog.h"
#include "Faults.h"

namespace android {

using quill::host::CallLog;
using quill::host::Faults;

struct Surface::Hooks {
    static int perform(ANativeWindow* window, int operation, ...) {
        va_list arguments;
        va_start(arguments, operation);
        const int result = getSelf(window)->perform(operation, arguments);
        va_end(arguments);
        return result;
    }

    /** The consumer is done with a buffer before it releases it, so there is no fence to wait for. */
    static int dequeueBufferAndWait(ANativeWindow* window, ANativeWindowBuffer** buffer) {
        return getSelf(window)->dequeueBuffer(buffer);
    }

    static int queueBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->queueBuffer(buffer, fenceFd);
    }

    static int cancelBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->cancelBuffer(buffer, fenceFd);
    }
};

Surface::Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool /* controlledByApp */,
                 const sp<IBinder>& /* surfaceControlHandle */)
        : mProducer(bufferProducer) {
    ANativeWindow::dequeueBuffer_DEPRECATED = Hooks::dequeueBufferAndWait;
    ANativeWindow::perform = Hooks::perform;
    ANativeWindow::queueBuffer = Hooks::queueBuffer;
    ANativeWindow::cancelBuffer = Hooks::cancelBuffer;
}

/** An operation of `perform`, under the name of the call that programs make. */
struct Surface::Operation {
    int id;
    const char* call;
    int (Surface::*run)(va_list);
};

int Surface::perform(int operation, va_list arguments) {
    static constexpr Operation kOperations[] = {
            {NATIVE_WINDOW_SET_BUFFERS_GEOMETRY, "ANativeWindow_setBuffersGeometry", &Surface::performSetGeometry},
            {NATIVE_WINDOW_API_CONNECT, "native_window_api_connect", &Surface::performConnect},
            {NATIVE_WINDOW_API_DISCONNECT, "native_window_api_disconnect", &Surface::performDisconnect},
            {NATIVE_WINDOW_SET_USAGE64, "native_window_set_usage", &Surface::performSetUsage},
    };
    for (const Operation& known : kOperations) {
        if (known.id != operation) continue;
        if (const auto status = Faults::instance().statusAt(known.call)) return *status;
        return (this->*known.run)(arguments);
    }
    return NAME_NOT_FOUND;
}

int Surface::performSetGeometry(va_list arguments) {
    const int width = va_arg(arguments, int);
    const int height = va_arg(arguments, int);
    const int format = va_arg(arguments, int);
    CallLog::instance().note("ANativeWindow_setBuffersGeometry", {width, height, format});
    if (width < 0 || height < 0 || (width == 0) != (height == 0)) return BAD_VALUE;
    const std::lock_guard<std::mutex> guard(mLock);
    mRequest.width = static_cast<uint32_t>(width);
    mRequest.height = static_cast<uint32_t>(height);
    mRequest.format = format;
    return OK;
}

int Surface::performSetUsage(va_list arguments) {
    const uint64_t usage = va_arg(arguments, uint64_t);
    CallLog::instance().note("native_window_set_usage", {static_cast<int64_t>(usage)});
    const std::lock_guard<std::mutex> guard(mLock);
    mRequest.usage = usage;
    return OK;
}

int Surface::performConnect(va_list arguments) {
    if (mProducer == nullptr) return NO_INIT;
    const int api = va_arg(arguments, int);
    const status_t connected = mProducer->connect(api);
    if (connected != OK) return connected;
    const std::lock_guard<std::mutex> guard(mLock);
    mConnectedApi = api;
    return OK;
}

int Surface::performDisconnect(va_list arguments) {
    if (mProducer == nullptr) return NO_INIT;
    const status_t disconnected = mProducer->disconnect(va_arg(arguments, int));
    if (disconnected != OK) return disconnected;
    const std::lock_guard<std::mutex> guard(mLock);
    mConnectedApi = 0;
    mDequeued.clear();
    return OK;
}

}  // namespace android
