#pragma once

#include <stdint.h>

#include <mutex>
#include <string>

namespace quill::host {

/**
 * Trace events in a file, in Chrome's JSON array format, which Perfetto opens. Every event is written at once, and the
 * format allows for a missing end: the trace of a process that dies is readable too. Thread-safe.
 */
class TraceFile {
  public:
    /** Empties the file. When it cannot be opened that is logged, and events are dropped. */
    explicit TraceFile(const char* path);
    ~TraceFile();
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    bool isOpen() const { return mFd >= 0; }

    /**
     * One event of the calling thread, now. `phase` is the format's letter; `fields` are further members, each with a
     * comma in front.
     */
    void write(char phase, const std::string& name, const std::string& fields = "");
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

/** A JSON string, quotes included. What is not printable ASCII becomes a question mark. */
std::string jsonString(const std::string& text);

}  // namespace quill::host
