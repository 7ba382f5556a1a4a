#pragma once

#include <stdint.h>

#include <mutex>
#include <string>

namespace quill::host {

/**
 * A trace file in Chrome's JSON array format, which Perfetto opens. Every event is written at once, and the format
 * allows a missing end, so the trace of a process that dies is readable too. Thread-safe.
 */
class TraceFile {
  public:
    /** Empties the file. If it cannot be opened, that is logged and events are dropped. */
    explicit TraceFile(const char* path);
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    bool isOpen() const { return mFd >= 0; }

    /** One event of the calling thread, now. `phase` is the format's letter. */
    void write(char phase, const std::string& name);
    /** Ends the array; later events are dropped. */
    void close();

  private:
    void writeEvent(const std::string& members);
    void nameThread();
    void append(const std::string& text);

    const uint64_t mNumber;  // from 1
    std::mutex mLock;
    int mFd;
    bool mHasEvents = false;
};

}  // namespace quill::host
