// Faults made on purpose, one a run, in the library's own code where it can be brought to make one: whoever watches
// this process has to name it. `faults NAME`; "none" makes none.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>

#include <map>
#include <memory>
#include <string>

#include "ExifBlock.h"
#include "Nv12Conversion.h"
#include "TileLayout.h"

namespace {

// Volatile throughout: the compiler is to know neither sizes nor values, or it warns of the fault or leaves it out.
volatile size_t gBytes = 8;

void analyse(const uint8_t* block, size_t bytes) {
    printf("%u\n", android::analyseExifBlock({block, bytes}, 0).initPosition);
}

/** The block is shorter than it says. */
void overflow() { analyse(std::make_unique<uint8_t[]>(gBytes).get(), gBytes * 8); }

void useAfterFree() {
    const uint8_t* const block = new uint8_t[gBytes]();
    delete[] block;
    analyse(block, gBytes);
}

void leak() {
    uint8_t* volatile block = new uint8_t[gBytes];
    block[0] = 1;
    block = nullptr;
}

void uninitialisedRead() { analyse(std::unique_ptr<uint8_t[]>(new uint8_t[gBytes]).get(), gBytes); }

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
    pthread_t threads[2];
    for (pthread_t& thread : threads) pthread_create(&thread, nullptr, swapPairs, frame);
    for (const pthread_t thread : threads) pthread_join(thread, nullptr);
}

}  // namespace

int main(int, char** arguments) {
    const std::map<std::string, void (*)()> faults = {{"none", [] {}},
                                                      {"overflow", overflow},
                                                      {"use-after-free", useAfterFree},
                                                      {"leak", leak},
                                                      {"uninitialised-read", uninitialisedRead},
                                                      {"overflow-of-int", overflowOfInt},
                                                      {"race", race}};
    fprintf(stderr, "making %s\n", arguments[1]);
    faults.at(arguments[1])();
    fprintf(stderr, "made %s\n", arguments[1]);
}
