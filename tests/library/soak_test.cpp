// What thousands of stills in one process leave behind, and many writers at work at the same time.
#include <gmock/gmock.h>
#include <malloc.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <thread>

#include "Clock.h"
#include "support/HeifReader.h"
#include "support/Photograph.h"
#include "support/Still.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

constexpr InputColorFormat kFormats[] = {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21};
constexpr int kWhole = 64, kGrid = 520;  // pixels a row
constexpr int kWarmUp = 20;  // each format and shape twice: what is kept once per process is there afterwards

// A sanitizer's own allocator counts no bytes. The address sanitizer looks for leaks at exit in their place.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsHeap = false;
#else
constexpr bool kCountsHeap = true;
#endif

size_t heapBytes() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

/** Stills of all formats, whole ones and grids of two tiles by turns; the heap may grow by `growth` bytes. */
void soak(const char* name, int count, size_t growth) {
    mallopt(M_ARENA_MAX, 1);  // each further one counts as memory in use, and which thread makes one is chance
    const auto write = [&](int stills) {
        for (int i = 0; i < stills; ++i) {
            App app({"", "", kFormats[i / 2 % std::size(kFormats)], false, false, i % 2 == 0 ? kWhole : kGrid});
            app.setUp();
            ASSERT_EQ(0, app.write()) << "still " << i;
            app.destroy();
        }
    };
    write(kWarmUp);
    const Holdings before = Holdings::now();
    const size_t start = heapBytes();
    write(count);
    const Holdings leaked = leakedSince(before);
    const size_t end = heapBytes();
    printf("%d stills, %s: heap in use %zu -> %zu bytes\n", count, name, start, end);
    EXPECT_EQ(0, leaked.descriptors);
    EXPECT_EQ(0, leaked.threads);
    if (!kCountsHeap) return;
    EXPECT_LE(end, start + growth);
}

TEST(Soak, TwoThousandStillsLeaveNothingBehind) {
    constexpr size_t kAllocatorCaches = 32 * 1000;  // half of two thousand of the smallest blocks there are
    setProperties("debug.quill.host.encoder=free");
    soak("free codec", 2000, kAllocatorCaches);
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
                EXPECT_GE(std::min(distance.luma, distance.chroma), 46) << i;
            } else {
                EXPECT_LT(distance.luma, 30) << i << " could be taken for " << other;
            }
        }
    }
}

}  // namespace
