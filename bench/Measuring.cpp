#include "Measuring.h"

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace quill::bench {

namespace {

double secondsOf(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double bytesOfPeak(const rusage& usage) { return 1024.0 * static_cast<double>(usage.ru_maxrss); }

double ownPeakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return bytesOfPeak(usage);
}

}  // namespace

Figures fastest(const Work& measured, const Work& bound) {
    const int fewestRuns = quick ? 1 : 7;
    const double enoughSeconds = quick ? 0 : 1;
    measured();
    bound();
    constexpr double kNever = std::numeric_limits<double>::infinity();
    Figures best{kNever, kNever};
    double spent = 0;
    for (int runs = 0; runs < fewestRuns || spent < enoughSeconds; ++runs) {
        const Figures run{secondsOf(measured), secondsOf(bound)};
        best = {std::min(best.measured, run.measured), std::min(best.bound, run.bound)};
        spent += run.measured + run.bound;
    }
    return best;
}

double peakBytes(const Work& warmUp, const Work& work) {
    // Free memory goes back to the system, large blocks at once: `work` would use it again unseen.
    constexpr int kDefaultThreshold = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, kDefaultThreshold);
    mallopt(M_TRIM_THRESHOLD, kDefaultThreshold);
    warmUp();
    malloc_trim(0);
    std::ofstream peak("/proc/self/clear_refs");
    if (!(peak << "5").flush()) throw std::runtime_error("the kernel does not reset the peak");  // to what is resident
    const double before = ownPeakBytes();
    work();
    return ownPeakBytes() - before;
}

void runShell(const std::string& command) {
    if (std::system((command + " >/dev/null").c_str()) != 0) throw std::runtime_error("failed: " + command);
}

void* sharedMemory(size_t bytes) {
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
    return memory;
}

double runForked(const Work& work) {
    fflush(stdout);  // or the copy would print it too
    const pid_t child = fork();
    if (child == 0) {
        try {
            work();
            fflush(stdout);
            _exit(0);
        } catch (const std::exception& exception) {
            fprintf(stderr, "quill_bench: %s\n", exception.what());
            _exit(1);
        }
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        throw std::runtime_error("its process failed");
    }
    return bytesOfPeak(usage);
}

}  // namespace quill::bench
