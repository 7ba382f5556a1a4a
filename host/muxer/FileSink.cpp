#include "FileSink.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quill::host {

namespace {

std::string describe(const char* what, int error) {
    return std::string(what) + ": " + std::generic_category().message(error);
}

bool isAppending(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    return flags >= 0 && (flags & O_APPEND);
}

bool isWritable(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

}  // namespace

std::unique_ptr<FileSink> FileSink::open(int fd, std::string* problem) {
    if (!isWritable(fd)) {
        *problem = "the descriptor is not open for writing";
        return nullptr;
    }
    if (lseek(fd, 0, SEEK_CUR) < 0) {
        *problem = describe("the descriptor is not seekable", errno);
        return nullptr;
    }
    const int duplicate = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) {
        *problem = describe("cannot duplicate the descriptor", errno);
        return nullptr;
    }
    return std::unique_ptr<FileSink>(new FileSink(duplicate));
}

FileSink::~FileSink() { close(mFd); }

bool FileSink::begin(uint64_t* start) {
    mStart = lseek(mFd, 0, isAppending(mFd) ? SEEK_END : SEEK_CUR);
    if (mStart < 0) return failed("cannot tell the file offset");
    *start = static_cast<uint64_t>(mStart);
    return true;
}

bool FileSink::append(ByteView bytes) {
    for (size_t done = 0; done < bytes.size;) {
        const ssize_t written = write(mFd, bytes.data + done, bytes.size - done);
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = EIO;  // no progress and no error
        if (written <= 0) return failed("write");
        done += static_cast<size_t>(written);
    }
    return true;
}

bool FileSink::finish(uint64_t end) {
    const off_t position = lseek(mFd, 0, SEEK_CUR);
    if (position < 0) return failed("cannot tell the file offset");
    if (static_cast<uint64_t>(position) != end) {
        mError = "the file offset was moved while the file was written";
        return false;
    }
    struct stat info {};
    if (fstat(mFd, &info) != 0) return failed("fstat");
    const bool hasRest = S_ISREG(info.st_mode) && info.st_size > position;
    return !hasRest || ftruncate(mFd, position) == 0 || failed("ftruncate");
}

void FileSink::rollBack() {
    if (mStart < 0) return;
    // Best effort: the failure that led here is the one that is reported.
    if (ftruncate(mFd, mStart) != 0) return;
    lseek(mFd, mStart, SEEK_SET);
}

bool FileSink::failed(const char* what) {
    mError = describe(what, errno);
    return false;
}

}  // namespace quill::host
