#pragma once

#include <string>
#include <vector>

namespace quill::test {

/**
 * Every line that the process logs while it lives, of all threads, as "E/Tag: text". One at a time; lines are not
 * printed meanwhile.
 */
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const;
    /** Those under `tag`, without "Tag: ": "E/text". */
    std::vector<std::string> of(const std::string& tag) const;
    int count(const std::string& line) const;
    bool has(const std::string& line) const { return count(line) > 0; }
    /** Until `line` has been logged; false when that takes longer than any machine should need. */
    bool waitFor(const std::string& line) const;
    void clear();
};

}  // namespace quill::test
