#include "ChromaOrder.h"

#include <string.h>

#include <algorithm>

#include "WidestVectors.h"

namespace android {

namespace {

QUILL_KERNEL void swapPair(uint8_t* pair) {
    uint16_t both;
    memcpy(&both, pair, sizeof both);
    both = static_cast<uint16_t>(both >> 8 | both << 8);
    memcpy(pair, &both, sizeof both);
}

QUILL_KERNEL void swapRows(const ChromaPlane& plane) {
    for (int64_t row = 0; row < plane.height / 2; ++row) {
        uint8_t* const pair = plane.data + row * plane.pitch;
        const int64_t pairs = std::min<int64_t>((plane.width - 1) / 2 + 1, (plane.bytes - row * plane.pitch) / 2);
        for (int64_t i = 0; i < pairs; ++i) swapPair(pair + 2 * i);
    }
}

}  // namespace

void swapChromaPairs(const ChromaPlane& plane, VectorWidth most) {
    withWidestVectors<swapRows, const ChromaPlane&>(most, plane);
}

}  // namespace android
