#include "PeakMemory.h"

#include <malloc.h>

#include <fstream>
#include <stdexcept>
#include <string>

namespace quill::bench {

namespace {

/** Bytes of one line of the process's status, which counts in kB. */
double statusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == key && status >> kilobytes) return 1024 * kilobytes;
    }
    throw std::runtime_error("no " + key + " in /proc/self/status");
}

/** Lowers the peak to what is resident now. */
void resetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

}  // namespace

PeakMemory::PeakMemory() {
    malloc_trim(0);
    resetPeak();
    mBaseline = statusBytes("VmRSS:");
}

double PeakMemory::peakBytes() const { return statusBytes("VmHWM:") - mBaseline; }

}  // namespace quill::bench
