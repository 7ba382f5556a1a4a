#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "BoxWriter.h"

namespace quill::host {

/**
 * Sequential output through a duplicate of the caller's descriptor, with which it shares the offset. Operations return
 * false if the system refuses; `error` gives the reason.
 */
class FileSink {
  public:
    /** Null, with the reason in `problem`, unless `fd` is writable and seekable. */
    static std::unique_ptr<FileSink> open(int fd, std::string* problem);
    ~FileSink();
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    /** Sets `start` to where writing begins: the current offset, or the end of the file in append mode. */
    bool begin(uint64_t* start);
    bool append(ByteView bytes);
    /** Truncates the file at the end of the data, which must be `end`. */
    bool finish(uint64_t end);
    /** Truncates the file to where writing began. */
    void rollBack();

    const std::string& error() const { return mError; }

  private:
    explicit FileSink(int ownedFd) : mFd(ownedFd) {}
    bool failed(const char* what);

    const int mFd;
    int64_t mStart = 0;
    std::string mError;
};

}  // namespace quill::host
