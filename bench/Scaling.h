#pragma once

#include <vector>

#include "Effort.h"

namespace quill::bench {

/** A still through the free codec. */
struct ScalingPoint {
    double megapixels;
    double seconds;
    double boundSeconds;
    double peakBytes;  ///< beside the frame
};

/** Of every size that a row of this run has measured, growing. */
std::vector<ScalingPoint> scalingOf(const Effort& effort);

}  // namespace quill::bench
