// A picture from a program's native window to the consumer behind it.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include <gui/Surface.h>
#include <system/window.h>
#include <ui/GraphicBuffer.h>

#include "BufferContents.h"
#include "BufferQueue.h"
#include "Faults.h"

namespace {

using namespace android;
using quill::host::BufferContents;
using quill::host::BufferQueue;
using quill::host::Fault;
using quill::host::Faults;

constexpr int kVendorP010 = 0x7FA30C0A;
constexpr uint32_t kWrite = GRALLOC_USAGE_SW_WRITE_OFTEN;
constexpr uint32_t kReadWrite = GRALLOC_USAGE_SW_READ_OFTEN | GRALLOC_USAGE_SW_WRITE_OFTEN;
constexpr int kNoFence = -1;

sp<GraphicBuffer> makeBuffer(uint32_t width, uint32_t height, int format, uint64_t usage = kReadWrite) {
    return new GraphicBuffer(width, height, format, 1, usage);
}

/** A window as the encoder sets it up: 512x512 RGBA, connected to the CPU. */
struct Window {
    explicit Window(int buffers, int ahead = 8) : queue(new BufferQueue(buffers)), surface(new Surface(queue, true)) {
        window = surface.get();
        EXPECT_EQ(0, ANativeWindow_setBuffersGeometry(window, 512, 512, HAL_PIXEL_FORMAT_RGBA_8888));
        EXPECT_EQ(0, native_window_set_usage(window, kReadWrite));
        EXPECT_EQ(0, surface->setMaxDequeuedBufferCount(ahead));
        EXPECT_EQ(0, native_window_api_connect(window, NATIVE_WINDOW_API_CPU));
    }

    ANativeWindowBuffer* dequeue() {
        ANativeWindowBuffer* buffer = nullptr;
        EXPECT_EQ(0, native_window_dequeue_buffer_and_wait(window, &buffer));
        return buffer;
    }
    int tryDequeue() {
        ANativeWindowBuffer* buffer = nullptr;
        return native_window_dequeue_buffer_and_wait(window, &buffer);
    }
    int queueBuffer(ANativeWindowBuffer* buffer, int fence = kNoFence) {
        return window->queueBuffer(window, buffer, fence);
    }
    void queueMarked(int mark) {
        ANativeWindowBuffer* const buffer = dequeue();
        void* address = nullptr;
        EXPECT_EQ(OK, GraphicBuffer::from(buffer)->lock(kWrite, &address));
        memcpy(address, &mark, sizeof(mark));
        EXPECT_EQ(OK, GraphicBuffer::from(buffer)->unlock());
        EXPECT_EQ(0, queueBuffer(buffer));
    }

    sp<BufferQueue> queue;
    sp<Surface> surface;
    ANativeWindow* window;
};

int markOf(const sp<GraphicBuffer>& buffer) {
    int mark;
    memcpy(&mark, BufferContents::of(*buffer).data, sizeof(mark));
    return mark;
}

TEST(GraphicBuffer, MemoryFitsSizeAndFormat) {
    const struct {
        uint32_t width, height;
        int format;
        uint32_t stride;
        size_t size;
    } cases[] = {
            {512, 512, HAL_PIXEL_FORMAT_RGBA_8888, 576, 1179648},
            {512, 512, HAL_PIXEL_FORMAT_YCBCR_P010, 576, 884736},
            {1, 1, kVendorP010, 64, 256},
            {65, 3, HAL_PIXEL_FORMAT_YCBCR_420_888, 128, 640},
    };
    for (const auto& expected : cases) {
        const sp<GraphicBuffer> buffer = makeBuffer(expected.width, expected.height, expected.format);
        EXPECT_EQ(expected.stride, buffer->getStride());
        EXPECT_EQ(expected.size, BufferContents::of(*buffer).size);
    }
}

TEST(GraphicBuffer, LockIsForOneAndForTheUsageItWasMadeFor) {
    const sp<GraphicBuffer> buffer = makeBuffer(8, 8, HAL_PIXEL_FORMAT_RGBA_8888, kWrite);
    void* address = nullptr;
    for (const uint32_t usage : {0u, kReadWrite, uint32_t{GRALLOC_USAGE_HW_TEXTURE}}) {
        EXPECT_EQ(BAD_VALUE, buffer->lock(usage, &address)) << usage;
    }
    EXPECT_EQ(INVALID_OPERATION, buffer->unlock());
    EXPECT_EQ(OK, buffer->lock(GRALLOC_USAGE_SW_WRITE_RARELY, &address));
    EXPECT_EQ(INVALID_OPERATION, buffer->lock(kWrite, &address));
    EXPECT_EQ(OK, buffer->unlock());

    Faults::instance().reset();
    Faults::instance().inject("GraphicBuffer::lock", Fault::nullBuffer());
    EXPECT_EQ(OK, buffer->lock(kWrite, &address));
    EXPECT_EQ(nullptr, address);
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
    const ANativeWindowBuffer* const first = producer.dequeue();
    EXPECT_LT(512, first->stride);
    ASSERT_EQ(0, producer.window->cancelBuffer(producer.window, const_cast<ANativeWindowBuffer*>(first), kNoFence));
    producer.queueMarked(7);
    producer.queue->release(producer.queue->acquire());

    ANativeWindowBuffer* buffer = producer.dequeue();
    EXPECT_EQ(first, buffer);
    EXPECT_EQ(7, markOf(GraphicBuffer::from(buffer)));
    ASSERT_EQ(0, producer.queueBuffer(buffer));
    producer.queue->release(producer.queue->acquire());

    EXPECT_EQ(-EINVAL, ANativeWindow_setBuffersGeometry(producer.window, 64, 0, 0));
    ASSERT_EQ(0, ANativeWindow_setBuffersGeometry(producer.window, 64, 32, HAL_PIXEL_FORMAT_YCBCR_P010));
    buffer = producer.dequeue();
    EXPECT_EQ(32, buffer->height);
    EXPECT_EQ(HAL_PIXEL_FORMAT_YCBCR_P010, buffer->format);
    EXPECT_EQ(0, markOf(GraphicBuffer::from(buffer)));
}

TEST(Surface, DequeueWaitsWhileAllBuffersAreOut) {
    Window producer(2);
    producer.queueMarked(1);
    producer.queueMarked(2);
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
    EXPECT_EQ(-EINVAL, producer.queueBuffer(makeBuffer(8, 8, 1)->getNativeBuffer()));
    EXPECT_EQ(0, producer.queueBuffer(buffer, ends[0]));
    EXPECT_EQ(-1, fcntl(ends[0], F_GETFD)) << "the fence is still open";
    EXPECT_EQ(-EINVAL, producer.queueBuffer(buffer, ends[1]));
    EXPECT_EQ(-1, fcntl(ends[1], F_GETFD)) << "the fence is still open";
}

TEST(Surface, AbandonedQueueFailsTheProducer) {
    Window producer(1);
    ANativeWindowBuffer* const held = producer.dequeue();
    ASSERT_EQ(OK, producer.surface->setMaxDequeuedBufferCount(2));
    std::thread blocked([&] { EXPECT_EQ(-ENODEV, producer.tryDequeue()); });
    producer.queue->abandon();
    blocked.join();
    EXPECT_EQ(-ENODEV, producer.queueBuffer(held));
    EXPECT_EQ(0, native_window_api_disconnect(producer.window, NATIVE_WINDOW_API_CPU));
    EXPECT_EQ(-ENODEV, native_window_api_connect(producer.window, NATIVE_WINDOW_API_CPU));
}

}  // namespace
