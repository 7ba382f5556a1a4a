// How a Surface is reached as an ANativeWindow: the function pointers, and the operations behind `perform`.
#include <gui/Surface.h>

#include <limits.h>

#include "CallLog.h"
#include "Faults.h"

namespace android {

using quill::host::CallLog;
using quill::host::Faults;

struct Surface::Hooks {
    static int setSwapInterval(ANativeWindow* window, int interval) {
        if (const auto status = Faults::instance().statusAt("ANativeWindow::setSwapInterval")) return *status;
        return getSelf(window)->setSwapInterval(interval);
    }

    static int query(const ANativeWindow* window, int what, int* value) {
        if (const auto status = Faults::instance().statusAt("ANativeWindow::query")) return *status;
        return getSelf(window)->query(what, value);
    }

    static int perform(ANativeWindow* window, int operation, ...) {
        va_list arguments;
        va_start(arguments, operation);
        const int result = getSelf(window)->perform(operation, arguments);
        va_end(arguments);
        return result;
    }

    static int dequeueBuffer(ANativeWindow* window, ANativeWindowBuffer** buffer, int* fenceFd) {
        return getSelf(window)->dequeueBuffer(buffer, fenceFd);
    }

    static int queueBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->queueBuffer(buffer, fenceFd);
    }

    static int cancelBuffer(ANativeWindow* window, ANativeWindowBuffer* buffer, int fenceFd) {
        return getSelf(window)->cancelBuffer(buffer, fenceFd);
    }

    // The hooks from before there were fences. This window hands out none, so there is nothing to wait for.
    static int dequeueBufferAndWait(ANativeWindow* window, ANativeWindowBuffer** buffer) {
        int fenceFd = -1;
        return getSelf(window)->dequeueBuffer(buffer, &fenceFd);
    }

    static int lockBuffer(ANativeWindow*, ANativeWindowBuffer*) { return OK; }  // dequeueing has waited already

    static int queueBufferWithoutFence(ANativeWindow* window, ANativeWindowBuffer* buffer) {
        return getSelf(window)->queueBuffer(buffer, -1);
    }

    static int cancelBufferWithoutFence(ANativeWindow* window, ANativeWindowBuffer* buffer) {
        return getSelf(window)->cancelBuffer(buffer, -1);
    }
};

Surface::Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool /* controlledByApp */,
                 const sp<IBinder>& /* surfaceControlHandle */)
        : mProducer(bufferProducer) {
    ANativeWindow::setSwapInterval = Hooks::setSwapInterval;
    ANativeWindow::dequeueBuffer_DEPRECATED = Hooks::dequeueBufferAndWait;
    ANativeWindow::lockBuffer_DEPRECATED = Hooks::lockBuffer;
    ANativeWindow::queueBuffer_DEPRECATED = Hooks::queueBufferWithoutFence;
    ANativeWindow::query = Hooks::query;
    ANativeWindow::perform = Hooks::perform;
    ANativeWindow::cancelBuffer_DEPRECATED = Hooks::cancelBufferWithoutFence;
    ANativeWindow::dequeueBuffer = Hooks::dequeueBuffer;
    ANativeWindow::queueBuffer = Hooks::queueBuffer;
    ANativeWindow::cancelBuffer = Hooks::cancelBuffer;
}

/** What `perform` knows, under the name of the call that programs make. */
struct Surface::Operation {
    int id;
    const char* call;
    int (Surface::*run)(va_list);
};

int Surface::perform(int operation, va_list arguments) {
    static constexpr Operation kOperations[] = {
            {NATIVE_WINDOW_SET_BUFFER_COUNT, "native_window_set_buffer_count", &Surface::performSetBufferCount},
            {NATIVE_WINDOW_SET_BUFFERS_GEOMETRY, "ANativeWindow_setBuffersGeometry", &Surface::performSetGeometry},
            {NATIVE_WINDOW_SET_BUFFERS_TRANSFORM, "native_window_set_buffers_transform", &Surface::performSetTransform},
            {NATIVE_WINDOW_SET_BUFFERS_TIMESTAMP, "native_window_set_buffers_timestamp", &Surface::performSetTimestamp},
            {NATIVE_WINDOW_SET_BUFFERS_DIMENSIONS, "native_window_set_buffers_dimensions",
             &Surface::performSetDimensions},
            {NATIVE_WINDOW_SET_BUFFERS_FORMAT, "native_window_set_buffers_format", &Surface::performSetFormat},
            {NATIVE_WINDOW_SET_SCALING_MODE, "native_window_set_scaling_mode", &Surface::performSetScalingMode},
            {NATIVE_WINDOW_LOCK, "ANativeWindow_lock", &Surface::performLock},
            {NATIVE_WINDOW_UNLOCK_AND_POST, "ANativeWindow_unlockAndPost", &Surface::performUnlockAndPost},
            {NATIVE_WINDOW_API_CONNECT, "native_window_api_connect", &Surface::performConnect},
            {NATIVE_WINDOW_API_DISCONNECT, "native_window_api_disconnect", &Surface::performDisconnect},
            {NATIVE_WINDOW_SET_BUFFERS_DATASPACE, "native_window_set_buffers_data_space",
             &Surface::performSetDataSpace},
            {NATIVE_WINDOW_SET_USAGE64, "native_window_set_usage", &Surface::performSetUsage},
    };
    for (const Operation& known : kOperations) {
        if (known.id != operation) continue;
        if (const auto status = Faults::instance().statusAt(known.call)) return *status;
        return (this->*known.run)(arguments);
    }
    return NAME_NOT_FOUND;
}

int Surface::performSetBufferCount(va_list arguments) {
    const size_t count = va_arg(arguments, size_t);
    return count > INT_MAX ? BAD_VALUE : setBufferCount(static_cast<int>(count));
}

int Surface::performSetDimensions(va_list arguments) {
    const int width = va_arg(arguments, int);
    const int height = va_arg(arguments, int);
    if (width < 0 || height < 0) return BAD_VALUE;
    return setBuffersDimensions(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
}

int Surface::performSetGeometry(va_list arguments) {
    const int width = va_arg(arguments, int);
    const int height = va_arg(arguments, int);
    const int format = va_arg(arguments, int);
    CallLog::instance().note("ANativeWindow_setBuffersGeometry", {width, height, format});
    if (width < 0 || height < 0) return BAD_VALUE;
    const int sized = setBuffersDimensions(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    return sized != OK ? sized : setBuffersFormat(format);
}

int Surface::performSetFormat(va_list arguments) { return setBuffersFormat(va_arg(arguments, int)); }

int Surface::performSetUsage(va_list arguments) {
    const uint64_t usage = va_arg(arguments, uint64_t);
    CallLog::instance().note("native_window_set_usage", {static_cast<int64_t>(usage)});
    return setUsage(usage);
}

int Surface::performSetScalingMode(va_list arguments) { return setScalingMode(va_arg(arguments, int)); }

int Surface::performSetTransform(va_list arguments) {
    const int transform = va_arg(arguments, int);
    const std::lock_guard<std::mutex> guard(mLock);
    mFrameSettings.transform = static_cast<uint32_t>(transform);
    return OK;
}

int Surface::performSetTimestamp(va_list arguments) {
    const int64_t timestamp = va_arg(arguments, int64_t);
    const std::lock_guard<std::mutex> guard(mLock);
    mFrameSettings.isAutoTimestamp = timestamp == NATIVE_WINDOW_TIMESTAMP_AUTO;
    mFrameSettings.timestamp = timestamp;
    return OK;
}

int Surface::performSetDataSpace(va_list arguments) {
    const int dataSpace = va_arg(arguments, int);
    const std::lock_guard<std::mutex> guard(mLock);
    mFrameSettings.dataSpace = static_cast<android_dataspace_t>(dataSpace);
    return OK;
}

int Surface::performLock(va_list arguments) {
    ANativeWindow_Buffer* const outBuffer = va_arg(arguments, ANativeWindow_Buffer*);
    ARect* const inOutDirtyBounds = va_arg(arguments, ARect*);
    return lock(outBuffer, inOutDirtyBounds);
}

int Surface::performUnlockAndPost(va_list) { return unlockAndPost(); }

int Surface::performConnect(va_list arguments) { return connect(va_arg(arguments, int)); }

int Surface::performDisconnect(va_list arguments) { return disconnect(va_arg(arguments, int)); }

}  // namespace android
