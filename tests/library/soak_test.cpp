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
#include "support/Watched.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

constexpr InputColorFormat kFormats[] = {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21};

size_t heapBytes() { return mallinfo2().uordblks + mallinfo2().hblkhd; }

/** Stills of all formats, whole ones and grids of two tiles by turns. */
void writeStills(int count) {
    for (int i = 0; i < count; ++i) {
        App app({"", "", kFormats[i / 2 % std::size(kFormats)], false, false, i % 2 == 0 ? 64 : 520});
        app.setUp();
        ASSERT_EQ(0, app.write()) << "still " << i;
        app.destroy();
    }
}

TEST(Soak, TwoThousandStillsLeaveNothingBehind) {
    setProperties("debug.quill.host.encoder=free");
    mallopt(M_ARENA_MAX, 1);  // each further one counts as memory in use, and which thread makes one is chance
    writeStills(20);          // what is kept once per process is there afterwards
    // Where memory is watched, the heap counts no bytes, and each block that is lost is reported at exit.
    const Holdings before = Holdings::now();
    const size_t start = heapBytes();
    writeStills(isWatched() ? 200 : 2000);
    EXPECT_EQ("", leakedSince(before));
    if (isWatched()) return;
    const size_t end = heapBytes();
    printf("2000 stills, free codec: heap in use %zu -> %zu bytes\n", start, end);
    EXPECT_LE(end, start + 32 * 1000) << "more than half of two thousand of the smallest blocks there are";
}

void onThreads(size_t count, const std::function<void(size_t)>& work) {
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

TEST(Soak, SixteenWritersAtOnceWriteTheirOwnFrames) {
    constexpr size_t kWriters = 16;
    setProperties("debug.quill.host.x265.preset=ultrafast");
    Clock::instance().setScale(20);  // the frame's 10 s in 200: sixteen encoders share this machine
    std::unique_ptr<Still> stills[kWriters];
    int32_t results[kWriters];
    onThreads(kWriters, [&](size_t i) {
        stills[i] = std::make_unique<Still>(
                makeFrame(kFormats[i % std::size(kFormats)], {300, 200, 320, 208}, static_cast<int>(i) * 30));
    });
    onThreads(kWriters, [&](size_t i) { results[i] = stills[i]->write(); });
    for (size_t i = 0; i < kWriters; ++i) {
        ASSERT_EQ(0, results[i]) << i;
        const ReadStill read = readStill(stills[i]->file.path());
        ASSERT_EQ("", read.error) << i;
        for (size_t other = 0; other < kWriters; ++other) {
            const double distance = psnr(stills[other]->frame.shown, read.planes);
            EXPECT_TRUE(other == i ? distance >= 46 : distance < 30) << i << " beside " << other << ": " << distance;
        }
    }
}

}  // namespace
