// Faults made on purpose, one a run: whoever watches this process has to name it. `faults NAME`; "none" makes none.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "ExifBlock.h"
#include "Nv12Conversion.h"
#include "TileLayout.h"

namespace {

// Volatile throughout: the compiler is to know neither sizes nor values, or it warns of the fault or leaves it out.
volatile size_t gBytes = 8;
volatile int gNumber = 0x7FFFFFFF;
int gShared = 0;

void heapOverflow() {
    volatile uint8_t* const block = new uint8_t[gBytes];
    block[gBytes] = 1;
    delete[] block;
}

void useAfterFree() {
    uint8_t* volatile block = new uint8_t[gBytes];
    delete[] block;
    block[gBytes - 1] = 1;
}

void signedOverflow() { gNumber = gNumber + 1; }

void misalignedRead() {
    alignas(8) static char bytes[16] = {};
    gNumber = *reinterpret_cast<volatile int*>(bytes + gBytes / 8);
}

void leak() {
    uint8_t* volatile block = new uint8_t[gBytes];
    block[0] = 1;
    block = nullptr;
}

void uninitialisedRead() {
    volatile uint8_t* const block = new uint8_t[gBytes];
    if (block[gBytes / 2] == 7) puts("seven");
    delete[] block;
}

/** Twice at once. Plain threads: the order that a lock of the C++ library gives would be seen. */
void inTwoThreads(void* (*body)(void*), void* argument) {
    pthread_t first, second;
    pthread_create(&first, nullptr, body, argument);
    pthread_create(&second, nullptr, body, argument);
    pthread_join(first, nullptr);
    pthread_join(second, nullptr);
}

void* incrementShared(void* shared) {
    for (int i = 0; i < 1000; ++i) ++*static_cast<volatile int*>(shared);
    return nullptr;
}

void dataRace() { inTwoThreads(incrementShared, &gShared); }

// ---- the same in the library's own code, which has to be watched too ------------------------------------------------

/** The block is shorter than it says. */
void libraryOverflow() {
    const uint8_t* const block = new uint8_t[gBytes]();
    printf("%u\n", android::analyseExifBlock({block, gBytes * 8}, 0).initPosition);
    delete[] block;
}

/** No frame is that narrow. */
void libraryOverflowOfInt() { printf("%d\n", android::tileArea({-gNumber - 1, 8, 8, 8}, 0).width); }

/** A pair in every eight bytes: ThreadSanitizer remembers no more than four accesses to that many. */
void libraryRace() {
    static uint8_t frame[8 * 16 * 3 / 2] = {};
    inTwoThreads(
            [](void* data) -> void* {
                android::swapChromaPairs(static_cast<uint8_t*>(data), {2, 16, 8, 16});
                return nullptr;
            },
            frame);
}

void none() {}

constexpr struct {
    const char* name;
    void (*make)();
} kFaults[] = {
        {"none", none},
        {"heap-overflow", heapOverflow},
        {"use-after-free", useAfterFree},
        {"signed-overflow", signedOverflow},
        {"misaligned-read", misalignedRead},
        {"leak", leak},
        {"uninitialised-read", uninitialisedRead},
        {"data-race", dataRace},
        {"library-overflow", libraryOverflow},
        {"library-overflow-of-int", libraryOverflowOfInt},
        {"library-race", libraryRace},
};

}  // namespace

int main(int argc, char** argv) {
    for (const auto& fault : kFaults) {
        if (argc != 2 || strcmp(argv[1], fault.name) != 0) continue;
        fprintf(stderr, "making %s\n", fault.name);
        fault.make();
        fprintf(stderr, "made %s\n", fault.name);
        return 0;
    }
    fprintf(stderr, "usage: %s FAULT\n", argv[0]);
    return 2;
}
