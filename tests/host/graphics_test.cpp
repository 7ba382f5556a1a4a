// A picture from a program's native window to the consumer behind it.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include <gui/Surface.h>
#include <system/window.h>
#include <ui/GraphicBuffer.h>

#include "BufferQueue.h"

namespace {

using namespace android;
using quill::host::BufferQueue;

constexpr uint32_t kWrite = GRALLOC_USAGE_SW_WRITE_OFTEN;
constexpr uint32_t kReadWrite = GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN;
constexpr int kNoFence = -1;

/** A window as the encoder sets it up: 512x512 RGBA, connected to the CPU. */
struct Window {
    explicit Window(int buffers) : queue(new BufferQueue(buffers)) {
        EXPECT_EQ(0, ANativeWindow_setBuffersGeometry(window, 512, 512, HAL_PIXEL_FORMAT_RGBA_8888));
        EXPECT_EQ(0, native_window_set_usage(window, kReadWrite));
        EXPECT_EQ(0, surface->setMaxDequeuedBufferCount(8));
        EXPECT_EQ(0, native_window_api_connect(window, NATIVE_WINDOW_API_CPU));
    }

    ANativeWindowBuffer* dequeue(int expected = 0) {
        ANativeWindowBuffer* buffer = nullptr;
        EXPECT_EQ(expected, native_window_dequeue_buffer_and_wait(window, &buffer));
        return buffer;
    }
    int queueBuffer(ANativeWindowBuffer* buffer, int fence = kNoFence) {
        return window->queueBuffer(window, buffer, fence);
    }

    sp<BufferQueue> queue;
    sp<Surface> surface = new Surface(queue, true);
    ANativeWindow* window = surface.get();
};

uint8_t& firstByte(ANativeWindowBuffer* buffer) {
    const sp<GraphicBuffer> graphic = GraphicBuffer::from(buffer);
    void* address = nullptr;
    EXPECT_EQ(OK, graphic->lock(kWrite, &address));
    EXPECT_EQ(OK, graphic->unlock());
    return *static_cast<uint8_t*>(address);
}

TEST(GraphicBuffer, LockIsForOneAndForTheUsageItWasMadeFor) {
    const sp<GraphicBuffer> buffer = new GraphicBuffer(8, 8, HAL_PIXEL_FORMAT_RGBA_8888, 1, kWrite);
    void* address = nullptr;
    for (const uint32_t usage : {0u, kReadWrite, uint32_t{GRALLOC_USAGE_HW_TEXTURE}}) {
        EXPECT_EQ(BAD_VALUE, buffer->lock(usage, &address)) << usage;
    }
    EXPECT_EQ(INVALID_OPERATION, buffer->unlock());
    EXPECT_EQ(OK, buffer->lock(GRALLOC_USAGE_SW_WRITE_RARELY, &address));
    EXPECT_EQ(INVALID_OPERATION, buffer->lock(kWrite, &address));
    EXPECT_EQ(OK, buffer->unlock());
}

TEST(Surface, LastReferenceToTheWindowDisconnects) {
    const sp<BufferQueue> queue = new BufferQueue(1);
    sp<ANativeWindow> window = new Surface(queue);
    ASSERT_EQ(0, native_window_api_connect(window.get(), NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(-EINVAL, queue->connect(NATIVE_WINDOW_API_CPU));
    window.clear();
    EXPECT_EQ(OK, queue->connect(NATIVE_WINDOW_API_CPU));
}

TEST(Surface, BufferIsReusedUnclearedUntilTheGeometryChanges) {
    Window producer(1);
    ANativeWindowBuffer* const first = producer.dequeue();
    EXPECT_LT(512, first->stride);
    firstByte(first) = 7;
    ASSERT_EQ(0, producer.window->cancelBuffer(producer.window, first, kNoFence));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(first, producer.dequeue());
        EXPECT_EQ(7, firstByte(first));
        ASSERT_EQ(0, producer.queueBuffer(first));
        producer.queue->release(producer.queue->acquire());
    }

    EXPECT_EQ(-EINVAL, ANativeWindow_setBuffersGeometry(producer.window, 64, 0, 0));
    ASSERT_EQ(0, ANativeWindow_setBuffersGeometry(producer.window, 64, 32, HAL_PIXEL_FORMAT_YCBCR_P010));
    ANativeWindowBuffer* const other = producer.dequeue();
    EXPECT_EQ(32, other->height);
    EXPECT_EQ(HAL_PIXEL_FORMAT_YCBCR_P010, other->format);
    EXPECT_EQ(0, firstByte(other));
}

TEST(Surface, DequeueWaitsWhileAllBuffersAreOut) {
    Window producer(2);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(0, producer.queueBuffer(producer.dequeue()));
    const sp<GraphicBuffer> acquired = producer.queue->acquire();
    ANativeWindowBuffer* dequeued = nullptr;
    std::thread blocked([&] { dequeued = producer.dequeue(); });
    producer.queue->release(acquired);
    blocked.join();
    EXPECT_EQ(acquired->getNativeBuffer(), dequeued);
}

TEST(Surface, TakesBackOnlyWhatIsDequeuedAndAlwaysTheFence) {
    Window producer(2);
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    ASSERT_EQ(1, write(ends[1], "x", 1));  // signalled
    ANativeWindowBuffer* const buffer = producer.dequeue();
    EXPECT_EQ(-EINVAL, producer.queueBuffer(nullptr));
    EXPECT_EQ(0, producer.queueBuffer(buffer, ends[0]));
    EXPECT_EQ(-EINVAL, producer.queueBuffer(buffer, ends[1]));
    for (const int end : ends) EXPECT_EQ(-1, fcntl(end, F_GETFD)) << "the fence is still open";
}

TEST(Surface, AbandonedQueueFailsTheProducer) {
    Window producer(1);
    ANativeWindowBuffer* const held = producer.dequeue();
    std::thread blocked([&] { producer.dequeue(-ENODEV); });
    producer.queue->abandon();
    blocked.join();
    EXPECT_EQ(-ENODEV, producer.queueBuffer(held));
    EXPECT_EQ(0, native_window_api_disconnect(producer.window, NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(-ENODEV, native_window_api_connect(producer.window, NATIVE_WINDOW_API_CPU));
}

}  // namespace
