#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace quill::host {

/** The quantiser of a constant-quality picture: 0 to 51, fractional, strictly decreasing with `quality` 0-100. */
double qpForQuality(int quality);

/**
 * Bits of one picture at a constant bitrate. Still-image clients set "bitrate" to the bits of one whole image with all
 * tiles, whatever the frame rate; each tile gets an equal share.
 */
int64_t bitsPerPicture(int64_t bitrate, int pictureCount);

/** A search for the whole quantiser at which a picture comes closest to a number of bits. */
class QpSearch {
  public:
    /** For a picture of `pixels` luma samples. */
    QpSearch(int64_t targetBits, int64_t pixels);

    /** The quantiser for the next trial; nothing if the best so far is close enough or no trials are left. */
    std::optional<int> next() const { return mNext; }
    /** Reports the bits at `next()`. True if that is the best result so far. */
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
