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

namespace android {

/**
 * A native window over a buffer queue. Thread-safe. Programs reach most of it through the hooks and functions of
 * <system/window.h>, which return 0 or a negative error, those of the queue included.
 */
class Surface : public ANativeObjectBase<ANativeWindow, Surface, RefBase> {
  public:
    /** `controlledByApp` and `surfaceControlHandle` are for a compositor; an encoder has no use for them. */
    explicit Surface(const sp<IGraphicBufferProducer>& bufferProducer, bool controlledByApp = false,
                     const sp<IBinder>& surfaceControlHandle = nullptr);

    /** How many buffers may be dequeued at once. */
    virtual int setMaxDequeuedBufferCount(int maxDequeuedBuffers);

  protected:
    /** Disconnects: buffers still dequeued go back to the queue. */
    ~Surface() override;

  private:
    struct Operation;
    struct Hooks;

    /** The buffer that the next dequeue asks for; 0 is the queue's default. */
    struct Request {
        uint32_t width = 0;
        uint32_t height = 0;
        PixelFormat format = 0;
        uint64_t usage = 0;
    };

    int dequeueBuffer(ANativeWindowBuffer** buffer);
    int queueBuffer(ANativeWindowBuffer* buffer, int fenceFd);
    int cancelBuffer(ANativeWindowBuffer* buffer, int fenceFd);

    int perform(int operation, va_list arguments);
    int performSetGeometry(va_list arguments);
    int performSetUsage(va_list arguments);
    int performConnect(va_list arguments);
    int performDisconnect(va_list arguments);

    /** Null if it is not dequeued. Compares the address only. */
    sp<GraphicBuffer> findDequeued(const ANativeWindowBuffer* buffer) const;
    void forgetDequeued(const sp<GraphicBuffer>& buffer);

    const sp<IGraphicBufferProducer> mProducer;
    mutable std::mutex mLock;
    Request mRequest;
    std::vector<sp<GraphicBuffer>> mDequeued;  // keeps them alive for the caller
    int mConnectedApi = 0;
};

}  // namespace android
