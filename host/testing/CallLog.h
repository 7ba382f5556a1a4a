#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace android {
struct AMessage;
}

namespace quill::host {

/**
 * What a program of the platform asked for, in order, for tests that hold the arguments of platform calls against
 * what they should be. Off until a test starts it. Thread-safe; one per process.
 */
class CallLog {
  public:
    static CallLog& instance();

    /** Forgets what was noted and notes from now on. */
    void start();
    bool isOn() const;
    /** Notes one call with its arguments as text, e.g. ("MediaMuxer::setOrientationHint", "90"). */
    void note(const char* call, const std::string& arguments);
    /** Notes numbers, a space between each two. */
    void note(const char* call, std::initializer_list<int64_t> arguments);
    /** Notes the items of a format, a line `key=value` each; those that are neither numbers nor text by their key. */
    void note(const char* call, const android::AMessage& format);
    /** The arguments of every noted occurrence of `call`, oldest first. */
    std::vector<std::string> of(const std::string& call) const;

  private:
    CallLog() = default;
};

}  // namespace quill::host
