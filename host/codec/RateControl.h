#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quill::host {

/** Quantiser of a constant-quality picture; 0 to 51 in fractions, strictly falling with `quality` 0-100. */
double qpForQuality(int quality);

/**
 * Bits of one picture under a constant bitrate. Still-image clients compute "bitrate" as the bits of one
 * whole image, every tile of its grid included, whatever the frame rate; each tile gets an equal share.
 */
int64_t bitsPerPicture(int64_t bitrate, int pictureCount);

/** Search for the whole quantiser at which one picture comes closest to a number of bits. */
class QpSearch {
  public:
    /** For a picture of `pixels` luma samples. */
    QpSearch(int64_t targetBits, int64_t pixels);

    /** Quantiser to encode at next; nothing when the best so far is good enough or the trials are used up. */
    std::optional<int> next() const { return mNext; }
    /** Bits that the picture took at `next()`. Returns whether that is the best result so far. */
    bool report(int64_t bits);

  private:
    struct Trial {
        int qp;
        double octaves;  // of the bits above the target
    };

    std::optional<int> choose() const;
    bool wasTried(int qp) const;

    static constexpr size_t kMaxTrials = 5;
    const double mTargetBits;
    Trial mTrials[kMaxTrials];
    size_t mTrialCount = 0;
    Trial mBest{};
    std::optional<int> mNext;
};

}  // namespace quill::host
