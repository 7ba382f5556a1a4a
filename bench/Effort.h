#pragma once

#include <vector>

#include "support/CameraFrames.h"

namespace quill::bench {

using test::Geometry;

/** A whole still that is measured, and the row it gives. */
struct StillSize {
    const char* row;
    int width;
    int height;

    double megapixels() const { return 1e-6 * width * height; }
};

/** How large everything is and how often it is measured. */
struct Effort {
    Geometry frame;                ///< that the single steps and the real encoder get
    int pairs;                     ///< measurements of a single step, each beside one of its bound
    int stills;                    ///< measurements of what takes longer
    std::vector<StillSize> sizes;  ///< of stills through the free codec, growing
    const char* photograph;        ///< that both programs encode
    int videoBytes;                ///< of a live photo
};

/** What the budgets are stated for. */
inline Effort fullEffort() {
    return {{4000, 3000, 4032, 3008},
            75,
            7,
            {{"still/1mp", 1152, 864},
             {"still/12mp", 4000, 3000},
             {"still/48mp", 8000, 6000},
             {"still/200mp", 16384, 12288}},
            "phone-3264x2448.jpg",
            32 << 20};
}

/** Enough to see that every row runs. */
inline Effort quickEffort() {
    return {{700, 600, 704, 608},
            1,
            1,
            {{"still/1mp", 320, 240}, {"still/12mp", 640, 480}, {"still/48mp", 1024, 768}, {"still/200mp", 1600, 1200}},
            "compact-640x480-with-thumbnail.jpg",
            1 << 20};
}

}  // namespace quill::bench
