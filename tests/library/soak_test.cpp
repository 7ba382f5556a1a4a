// What thousands of stills in one process leave behind, and many writers at work at the same time.
#include <gmock/gmock.h>
#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "HeifWriterJni.h"
#include "support/FakeVm.h"
#include "support/HeifReader.h"
#include "support/Still.h"
#include "support/TestDevice.h"
#include "testing/Clock.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

constexpr InputColorFormat kFormats[] = {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21};
constexpr Geometry kWhole{64, 48, 64, 48};
constexpr Geometry kGrid{520, 512, 520, 512};
constexpr int kWarmUp = 20;  // each format and shape twice: what is kept once per process is there afterwards

// A sanitizer's own allocator counts no bytes. The address sanitizer looks for leaks at exit in their place.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsHeap = false;
#else
constexpr bool kCountsHeap = true;
#endif

size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

/** A joined thread's entry goes a moment after the join. */
size_t threads() {
    size_t fewest = entriesOf("/proc/self/task");
    for (int i = 0; i < 1000; ++i) fewest = std::min(fewest, entriesOf("/proc/self/task"));
    return fewest;
}

struct Held {
    size_t heapBytes = mallinfo2().uordblks + mallinfo2().hblkhd;
    size_t descriptors = entriesOf("/proc/self/fd") - 1;  // but the one it is read through
    size_t taskCount = threads();
};

/** The life of one still as a Java object has it, with an EXIF block that gets a thumbnail. */
int64_t writeStill(const CameraFrame& shot) {
    constexpr int8_t kExif[] = {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const TemporaryFile file;
    FakeVm java;
    FakeVm::Object self, fd;
    FakeVm::Array frame, exif;
    fd.fd = file.fd();
    frame.bytes.assign(shot.bytes.begin(), shot.bytes.end());
    exif.bytes.assign(std::begin(kExif), std::end(kExif));
    const Geometry& g = shot.geometry;
    JNIEnv* const env = java.env();
    const jlong handle = nativeSetup(env, FakeVm::asJava(&self));
    nativeCreate(env, FakeVm::asJava(&self), handle, g.width, g.height, g.stride, g.sliceHeight, shot.format, 90, 0);
    const jlong result = nativeProcessHeicPhotoFrame(env, FakeVm::asJava(&self), handle, FakeVm::asJava(&frame),
                                                     FakeVm::asJava(&exif), FakeVm::asJava(&fd));
    nativeDestory(env, FakeVm::asJava(&self), handle);
    return result;
}

/** Stills of all formats, whole ones and grids of two tiles by turns; the heap may grow by `growth` bytes. */
void soak(const char* name, int count, size_t growth) {
    mallopt(M_ARENA_MAX, 1);  // each further one counts as memory in use, and which thread makes one is chance
    std::vector<CameraFrame> shots;
    for (const InputColorFormat format : kFormats) {
        shots.push_back(makeFrame(format, kWhole));
        shots.push_back(makeFrame(format, kGrid));
    }
    const auto write = [&](int stills) {
        for (int i = 0; i < stills; ++i) ASSERT_EQ(0, writeStill(shots[i % shots.size()])) << "still " << i;
    };
    write(kWarmUp);
    const Held start;
    write(count);
    const Held end;
    printf("%d stills, %s: heap in use %zu -> %zu bytes, descriptors %zu -> %zu, threads %zu -> %zu\n", count, name,
           start.heapBytes, end.heapBytes, start.descriptors, end.descriptors, start.taskCount, end.taskCount);
    EXPECT_EQ(start.descriptors, end.descriptors);
    EXPECT_EQ(start.taskCount, end.taskCount);
    if (!kCountsHeap) return;
    EXPECT_LE(end.heapBytes, start.heapBytes + growth);
}

TEST(Soak, TwoThousandStillsLeaveNothingBehind) {
    constexpr size_t kAllocatorCaches = 32 * 1000;  // half of two thousand of the smallest blocks there are
    setProperties("debug.quill.host.encoder=free");
    soak("free codec", 2000, kAllocatorCaches);
}

// x265 3.5 loses some 1,190 bytes of its own with every encoder that is opened and closed.
TEST(Soak, TwoHundredStillsOfTheRealEncoderLeaveOnlyWhatItKeeps) {
    constexpr size_t kLostPerEncoder = 1300;
    constexpr int kStills = 200;
    setProperties("debug.quill.host.x265.preset=ultrafast");
    const size_t encodersForTwo = 1 + std::clamp(std::thread::hardware_concurrency(), 1u, 2u);  // whole, two tiles
    soak("x265", kStills, kStills / 2 * encodersForTwo * kLostPerEncoder);
}

void onThreads(size_t count, const std::function<void(size_t)>& work) {
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

TEST(Soak, SixteenWritersAtOnceWriteTheirOwnFrames) {
    constexpr size_t kWriters = 16;
    constexpr int kPan = 30;
    setProperties("debug.quill.host.x265.preset=ultrafast");
    Clock::instance().setScale(20);  // the frame's 10 s in 200: sixteen encoders share this machine
    std::unique_ptr<Still> stills[kWriters];
    int32_t results[kWriters];
    onThreads(kWriters, [&](size_t i) {
        stills[i] = std::make_unique<Still>(
                makeFrame(kFormats[i % std::size(kFormats)], {300, 200, 320, 208}, static_cast<int>(i) * kPan));
    });
    onThreads(kWriters, [&](size_t i) { results[i] = stills[i]->write(); });
    for (size_t i = 0; i < kWriters; ++i) {
        ASSERT_EQ(0, results[i]) << i;
        const ReadStill read = readStill(stills[i]->file.path());
        ASSERT_EQ("", read.error) << i;
        for (size_t other = 0; other < kWriters; ++other) {
            const Psnr distance = psnr(stills[other]->frame.shown, read.planes);
            if (other == i) {
                EXPECT_GE(std::min(distance.luma, distance.chroma), 36) << i;
            } else {
                EXPECT_LT(distance.luma, 30) << i << " could be taken for " << other;
            }
        }
    }
}

}  // namespace
