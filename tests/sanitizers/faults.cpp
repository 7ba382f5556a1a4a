// Faults made on purpose, one a run, in the library's own code where it can be brought to make one: whoever watches
// this process has to name it. `faults NAME`; "none" makes none.
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

/** The block is shorter than it says. */
void overflow() {
    const uint8_t* const block = new uint8_t[gBytes]();
    printf("%u\n", android::analyseExifBlock({block, gBytes * 8}, 0).initPosition);
    delete[] block;
}

void useAfterFree() {
    const uint8_t* const block = new uint8_t[gBytes]();
    delete[] block;
    printf("%u\n", android::analyseExifBlock({block, gBytes}, 0).initPosition);
}

void leak() {
    uint8_t* volatile block = new uint8_t[gBytes];
    block[0] = 1;
    block = nullptr;
}

void uninitialisedRead() {
    const uint8_t* const block = new uint8_t[gBytes];
    printf("%u\n", android::analyseExifBlock({block, gBytes}, 0).initPosition);
    delete[] block;
}

/** No frame is that narrow. */
void overflowOfInt() { printf("%d\n", android::tileArea({INT32_MIN, 8, 8, 8}, 0).width); }

/** A pair in every eight bytes: ThreadSanitizer remembers no more than four accesses to that many. */
void* swapPairs(void* frame) {
    android::swapChromaPairs(static_cast<uint8_t*>(frame), {2, 16, 8, 16});
    return nullptr;
}

/** Plain threads: the order that a lock of the C++ library gives would be seen. */
void race() {
    static uint8_t frame[8 * 16 * 3 / 2] = {};
    pthread_t first, second;
    pthread_create(&first, nullptr, swapPairs, frame);
    pthread_create(&second, nullptr, swapPairs, frame);
    pthread_join(first, nullptr);
    pthread_join(second, nullptr);
}

void none() {}

constexpr struct {
    const char* name;
    void (*make)();
} kFaults[] = {
        {"none", none},
        {"overflow", overflow},
        {"use-after-free", useAfterFree},
        {"leak", leak},
        {"uninitialised-read", uninitialisedRead},
        {"overflow-of-int", overflowOfInt},
        {"race", race},
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
