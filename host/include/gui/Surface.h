#pragma once

#include <stdarg.h>
#include <stdint.h>

#include <mutex>
#include <vector>

#include <binder/IInterface.h>
#include <gui/IGraphicBufferProducer.h>
#include <system/window.h>
#include <ui/ANativeObjectBase.h>
#include <ui/GraphicBuffer.h>
#include <utils/RefBase.h>
#include <utils/Timers.h>

namespace android {

/**
 * A native window over a buffer queue. Thread-safe. Methods return 0 or a negative error, those of the queue included;
 * most are reached through the hooks and functions of <system/window.h>.
 */
class Surface : public ANativeObjectBase<ANativeWindow, Surface, RefBase> {
  public:
    /** `controlledByApp` and `surfaceControlHandle` tell a compositor who draws; they mean nothing to an encoder. */
    explicit Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool controlledByApp = false,
                     const sp<IBinder>& surfaceControlHandle = nullptr);

    sp<IGraphicBufferProducer> getIGraphicBufferProducer() const;
    static bool isValid(const sp<Surface>& surface);

    /** How many buffers may be dequeued at once. */
    virtual int setMaxDequeuedBufferCount(int maxDequeuedBuffers);
    /** In asynchronous mode a new frame replaces one that still waits for the consumer. */
    virtual int setAsyncMode(bool async);
    /** Nanoseconds; negative waits for ever. */
    status_t setDequeueTimeout(nsecs_t timeout);
    /** NATIVE_WINDOW_SCALING_MODE_*. */
    int setScalingMode(int mode);
    /** Pixels; both 0 is the queue's own size. */
    virtual int setBuffersDimensions(uint32_t width, uint32_t height);
    virtual int query(int what, int* value) const;

    virtual int disconnect(int api,
                           IGraphicBufferProducer::DisconnectMode mode = IGraphicBufferProducer::DisconnectMode::Api);

    /** Connects the CPU if need be, dequeues and locks; INVALID_OPERATION while a buffer is locked so. */
    virtual int lock(ANativeWindow_Buffer* outBuffer, ARect* inOutDirtyBounds);
    virtual int unlockAndPost();

  protected:
    /** Disconnects: buffers still dequeued go back to the queue. */
    ~Surface() override;

    virtual int connect(int api);
    virtual int setBufferCount(int bufferCount);
    virtual int setSwapInterval(int interval);
    virtual int setBuffersFormat(PixelFormat format);
    virtual int setUsage(uint64_t usage);
    virtual int dequeueBuffer(ANativeWindowBuffer** buffer, int* fenceFd);
    virtual int queueBuffer(ANativeWindowBuffer* buffer, int fenceFd);
    virtual int cancelBuffer(ANativeWindowBuffer* buffer, int fenceFd);

  private:
    struct Operation;
    struct Hooks;

    /** What the next dequeue asks for; 0 is the queue's default. */
    struct Request {
        uint32_t width = 0;
        uint32_t height = 0;
        PixelFormat format = 0;
        uint64_t usage = 0;
    };

    int perform(int operation, va_list arguments);
    int performSetBufferCount(va_list arguments);
    int performSetGeometry(va_list arguments);
    int performSetTransform(va_list arguments);
    int performSetTimestamp(va_list arguments);
    int performSetDimensions(va_list arguments);
    int performSetFormat(va_list arguments);
    int performSetScalingMode(va_list arguments);
    int performLock(va_list arguments);
    int performUnlockAndPost(va_list arguments);
    int performConnect(va_list arguments);
    int performDisconnect(va_list arguments);
    int performSetDataSpace(va_list arguments);
    int performSetUsage(va_list arguments);

    int connectCpuForLock();
    /** Null when it is not dequeued: nothing but its address has been looked at. */
    sp<GraphicBuffer> findDequeued(const ANativeWindowBuffer* buffer) const;
    void forgetDequeued(const sp<GraphicBuffer>& buffer);
    Request request() const;

    const sp<IGraphicBufferProducer> mProducer;
    mutable std::mutex mLock;
    Request mRequest;
    IGraphicBufferProducer::QueueBufferInput mFrameSettings;
    std::vector<sp<GraphicBuffer>> mDequeued;  // what keeps them alive for the caller
    int mConnectedApi = 0;
    sp<GraphicBuffer> mLockedBuffer;
};

}  // namespace android
