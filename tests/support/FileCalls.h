#pragma once

#include <cstdint>
#include <functional>

namespace quill::test {

/**
 * While one lives, `fcntl`, `lseek`, `read` and `write` called from the test program itself, which is where the library
 * is, ask for faults under their names; the stand-in's own do not. A status is an errno, negated. And each `usleep` of
 * the program, which is how a caller polls for its frame, runs `onPoll` first. One at a time.
 */
class FileCalls {
  public:
    explicit FileCalls(std::function<void()> onPoll);
    ~FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;

    /** How long the program has asked to sleep since the last one was made. */
    static int64_t sleptUs();
};

}  // namespace quill::test
