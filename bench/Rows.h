#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quill::bench {

/** Both sides of one row, in seconds or bytes. */
struct Figures {
    double measured;
    double bound;
    double ratio;
    std::string remark;  ///< what the figures alone do not say
};

/** Two pieces of work that are timed against each other. */
struct Sides {
    std::function<void()> measured;
    std::function<void()> bound;
};

/** Seconds that `work` takes. */
double secondsOf(const std::function<void()>& work);
/** Of any number of values but none. */
double median(std::vector<double> values);

/**
 * Times both sides by turns, each as often as the other goes first, so that what else the machine does falls on both.
 * The medians of the times, and of the ratios of the pairs.
 */
class PairedTimes {
  public:
    explicit PairedTimes(Sides sides);
    /** Times one pair; returns the measured side's seconds. */
    double timePair();
    Figures figures() const;
    /** The measured side's fewest seconds: for a bound that other work on the machine does not slow down. */
    double fastest() const;

  private:
    const Sides mSides;
    std::vector<double> mMeasured;
    std::vector<double> mBound;
    std::vector<double> mRatios;
};

/** A row of `pairs` pairs; `prepare` is called when the row is run. */
void addPairedRow(const char* row, int pairs, std::function<Sides()> prepare);
/** A row that brings its own figures. An exception is the row's failure. */
void addRow(const char* row, std::function<Figures()> measure);

}  // namespace quill::bench
