#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace quill::host {

/**
 * The platform calls of a program and their arguments, in order, for tests that check them. Off until a test starts it.
 * Thread-safe; one per process.
 */
class CallLog {
  public:
    static CallLog& instance();

    /** Clears the log and switches it on. */
    void start();
    /** Notes one call with its arguments as text, e.g. ("MediaMuxer::setOrientationHint", "90"). */
    void note(const char* call, const std::string& arguments);
    /** Notes numbers, separated by spaces. */
    void note(const char* call, std::initializer_list<int64_t> arguments);
    /** The arguments of each noted `call`, oldest first. */
    std::vector<std::string> of(const std::string& call) const;

  private:
    CallLog() = default;
};

}  // namespace quill::host
