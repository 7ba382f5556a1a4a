#include "RateControl.h"

#include <algorithm>
#include <cmath>

namespace quill::host {

namespace {

constexpr int kMaxQp = 51;

struct QualityRow {
    int quality;
    double qp;
};

// Interpolated linearly. Every step of quality changes the quantiser by at least a quarter.
constexpr QualityRow kQualities[] = {{0, 50.0}, {50, 34.0}, {80, 26.0}, {95, 18.0}, {100, 5.0}};

// The first guess: so many bits per pixel at this quantiser, and half of them at kQpPerOctave more.
constexpr double kTypicalBitsPerPixel = 0.65;
constexpr double kTypicalQp = 20.0;
constexpr double kQpPerOctave = 6.5;

/** About half of what one whole step of the quantiser changes. */
constexpr double kCloseEnoughOctaves = 0.09;

}  // namespace

double qpForQuality(int quality) {
    const int wanted = std::clamp(quality, 0, 100);
    const QualityRow* upper = kQualities + 1;
    while (upper->quality < wanted) ++upper;
    const QualityRow* const lower = upper - 1;
    const double part = static_cast<double>(wanted - lower->quality) / (upper->quality - lower->quality);
    return lower->qp + part * (upper->qp - lower->qp);
}

int64_t bitsPerPicture(int64_t bitrate, int pictureCount) { return bitrate / std::max(1, pictureCount); }

QpSearch::QpSearch(int64_t targetBits, int64_t pixels)
        : mTargetBits(static_cast<double>(std::max<int64_t>(1, targetBits))) {
    const double octaves = std::log2(mTargetBits / (static_cast<double>(pixels) * kTypicalBitsPerPixel));
    mNext = std::clamp(static_cast<int>(std::lround(kTypicalQp - kQpPerOctave * octaves)), 0, kMaxQp);
}

bool QpSearch::report(int64_t bits) {
    const Trial trial{*mNext, std::log2(static_cast<double>(std::max<int64_t>(1, bits)) / mTargetBits)};
    const bool best = mTrialCount == 0 || std::abs(trial.octaves) < std::abs(mBest.octaves);
    if (best) mBest = trial;
    mTrials[mTrialCount++] = trial;
    mNext = choose();
    return best;
}

std::optional<int> QpSearch::choose() const {
    if (mTrialCount == kMaxTrials || std::abs(mBest.octaves) <= kCloseEnoughOctaves) return std::nullopt;
    double qpPerOctave = kQpPerOctave;
    if (mTrialCount >= 2) {
        const Trial& a = mTrials[mTrialCount - 2];
        const Trial& b = mTrials[mTrialCount - 1];
        const double octaves = a.octaves - b.octaves;
        if (std::abs(octaves) > 0.01) qpPerOctave = std::clamp((b.qp - a.qp) / octaves, 2.0, 20.0);
    }
    const double step = mBest.octaves * qpPerOctave;
    const int qp = std::clamp(mBest.qp + static_cast<int>(std::lround(step)), 0, kMaxQp);
    return wasTried(qp) ? std::nullopt : std::optional<int>(qp);
}

bool QpSearch::wasTried(int qp) const {
    return std::any_of(mTrials, mTrials + mTrialCount, [qp](const Trial& trial) { return trial.qp == qp; });
}

}  // namespace quill::host
