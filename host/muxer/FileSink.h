#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "BoxWriter.h"

namespace quill::host {

/**
 * Sequential output through a duplicate of someone's descriptor, which shares its offset and stays theirs.
 * Operations are false, and `error` says why, when the system refuses.
 */
class FileSink {
  public:
    /** Null, and the reason in `problem`, unless `fd` is writable and seekable. */
    static std::unique_ptr<FileSink> open(int fd, std::string& problem);
    ~FileSink();
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    /** Where writing begins: the current offset, or the file's end in append mode. */
    bool begin(uint64_t& start);
    bool append(ByteView bytes);
    /** Cuts off what the file holds behind the data, which ends at `end`, and checks that it does end there. */
    bool finish(uint64_t end);
    /** Cuts the file back to where writing began. */
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
