#pragma once

#include <string>
#include <vector>

namespace quill::bench {

/** Runs a command with stdin empty and stderr ours; returns what it wrote to stdout. Throws unless it succeeds. */
std::string run(const std::vector<std::string>& command);

struct Usage {
    double seconds;
    double peakBytes;  ///< resident
};
/**
 * What `command` takes, its output discarded. In the calling process's children the peak is no less than that of the
 * caller, whose memory a child shares until it has become the command: a small process should call.
 */
Usage usageOf(const std::vector<std::string>& command);

/** The program for what needs a process of its own, and its answer: numbers. See Child.cpp. */
std::vector<double> askChild(const std::vector<std::string>& arguments);

}  // namespace quill::bench
