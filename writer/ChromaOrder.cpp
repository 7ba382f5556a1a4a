#include "ChromaOrder.h"

#include <algorithm>
#include <utility>

namespace android {

void swapChromaPairs(const ChromaPlane& plane) {
    for (int64_t row = 0; row < plane.height / 2; ++row) {
        uint8_t* const pair = plane.data + row * plane.pitch;
        const int64_t pairs = std::min<int64_t>((plane.width - 1) / 2 + 1, (plane.bytes - row * plane.pitch) / 2);
        for (int64_t i = 0; i < pairs; ++i) std::swap(pair[2 * i], pair[2 * i + 1]);
    }
}

}  // namespace android
