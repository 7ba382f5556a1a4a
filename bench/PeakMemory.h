#pragma once

namespace quill::bench {

/** Resident memory of this process above what it had when the mark was made. */
class PeakMemory {
  public:
    /** Gives free memory back to the system first, so that none of it is used again unseen. */
    PeakMemory();
    /** Bytes, the highest since. */
    double peakBytes() const;

  private:
    double mBaseline;
};

}  // namespace quill::bench
