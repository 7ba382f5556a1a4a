#include "InputColorFormat.h"

namespace android {

int getBitsPerPixel(int fmt) {
    switch (fmt) {
        case FORMAT_RGBA8888:
            return 32;
        case FORMAT_P010:
            return 24;
        default:
            return 12;
    }
}

}  // namespace android
