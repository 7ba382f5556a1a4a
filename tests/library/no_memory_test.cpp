// Memory that cannot be had, at every allocation that the library makes for a photograph on the caller's thread and on
// the looper's.
#include <gtest/gtest.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>
#include <new>

#include <android/log.h>

#include "Clock.h"
#include "support/FileCalls.h"
#include "support/Photograph.h"
#include "support/TestDevice.h"

// Where the program's code lies, as its linker says it.
extern "C" const char __executable_start, etext;  // NOLINT(bugprone-reserved-identifier)

namespace {

std::atomic<int> gLeft{0};  // allocations before the one that fails; 0: none fails any more
thread_local bool gCaller = false;

bool isLooper() {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return strncmp(name, "QuillHeifWriter", 15) == 0;
}

/** For a request of this program, which the library is part of. The stand-in's are the platform's own matter. */
bool fails(const void* requester) {
    const char* const from = static_cast<const char*>(requester);
    if (gLeft == 0 || from < &__executable_start || from >= &etext || !(gCaller || isLooper())) return false;
    int left = gLeft;
    while (left > 0 && !gLeft.compare_exchange_weak(left, left - 1)) {
    }
    return left == 1;
}

void* allocate(size_t size, const void* requester) { return fails(requester) ? nullptr : malloc(size == 0 ? 1 : size); }

void* allocateOrThrow(size_t size, const void* requester) {
    void* const memory = allocate(size, requester);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(size_t size) { return allocateOrThrow(size, __builtin_return_address(0)); }
void* operator new[](size_t size) { return allocateOrThrow(size, __builtin_return_address(0)); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size, __builtin_return_address(0)); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, __builtin_return_address(0));
}
void operator delete(void* memory) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;

std::atomic<bool> gLooperDone{false};

/** A logger that allocates nothing. */
void noteEnd(const __android_logger_data*, const char* message) {
    if (strcmp(message, "kWhatProcessInputFrameNotify done") == 0) gLooperDone = true;
}

/** Fails the `nth` allocation of a photograph; false if it has fewer. */
bool photographWithout(int nth, const PhotoCase& photo) {
    App app(photo);
    app.array.assign({app.frame().bytes.begin(), app.frame().bytes.end() - 1});  // to be completed in a copy
    const FileCalls calls(hurryOnce([] { return gLooperDone.load(); }));
    const Holdings before = Holdings::now();
    gLooperDone = false;
    gLeft = nth;
    gCaller = true;
    app.setUp();
    const long result = app.isSetUp() ? app.write() : -1;
    gCaller = false;
    const bool failed = gLeft.exchange(0) == 0;
    Clock::instance().setScale(1);
    if (app.isSetUp()) app.destroy();
    EXPECT_EQ("", leakedSince(before)) << nth;
    EXPECT_TRUE(app.holdsNothing()) << nth;
    EXPECT_EQ(result == 0 ? (photo.live ? " still mpvd gain qext" : " still") : " as it was", app.fileText()) << nth;
    return failed;
}

TEST(NoMemory, EveryAllocationOfAPhotographMayFail) {
    __android_log_set_logger(noteEnd);
    setenv("QUILL_DEVICE", "vendor-qti", 1);
    setProperties("debug.quill.host.encoder=free");
    for (const PhotoCase& photo :
         {PhotoCase{"array", "", FORMAT_NV12, true, false}, {"bitmap", "", FORMAT_RGBA8888, true, true}}) {
        photographWithout(1 << 30, photo);  // what is allocated once a process is there then
        int nth = 1;
        while (photographWithout(nth, photo)) ++nth;
        EXPECT_LT(20, nth) << photo.name;
    }
}

}  // namespace
