// Descriptors of every kind, and file systems that fill up: what the caller gets and what is in the file then.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "Clock.h"
#include "support/HeifReader.h"
#include "support/Still.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;
using Bytes = std::vector<uint8_t>;

/** A started writer whose stills are all alike. */
Still greyStill() {
    setProperties("debug.quill.host.encoder=free");
    return Still(makeFrame(FORMAT_NV12, {1000, 700, 1000, 700}));
}

int32_t writeTo(int fd) {
    Still still = greyStill();
    return still.writer->processInputFrame(still.frame.bytes.data(), nullptr, 0, fd);
}

size_t stillSize() {
    Still still = greyStill();
    EXPECT_EQ(0, still.write());
    return still.file.bytes().size();
}

/** No file grows beyond `bytes` while it lives, as on a file system that is full then. */
class FileSizeLimit {
  public:
    explicit FileSizeLimit(size_t bytes) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit = {bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &mBefore); }

  private:
    rlimit mBefore{};
};

TEST(Output, StillBeginsWhereTheDescriptorStandsAndEndsTheFile) {
    const std::string kBefore = "before";
    const struct {
        int flags;
        off_t offset;
        size_t kept;
    } kCases[] = {
            {O_WRONLY, 0, 0}, {O_RDWR, 3, 3}, {O_WRONLY | O_APPEND, 0, kBefore.size()}, {O_RDWR, 6, kBefore.size()}};
    const size_t size = stillSize();
    for (const auto& test : kCases) {
        const TemporaryFile file;
        ASSERT_EQ(6, ::write(file.fd(), kBefore.data(), kBefore.size()));
        const int fd = open(file.path().c_str(), test.flags | O_CLOEXEC);
        lseek(fd, test.offset, SEEK_SET);
        EXPECT_EQ(0, writeTo(fd)) << test.flags;
        const Bytes bytes = file.bytes();
        EXPECT_EQ(test.kept + size, bytes.size()) << test.flags;
        EXPECT_EQ(kBefore.substr(0, test.kept) + std::string("\0\0\0", 3),
                  std::string(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(test.kept) + 3));
        EXPECT_EQ(static_cast<off_t>(bytes.size()), lseek(fd, 0, SEEK_CUR)) << "for what is appended next";
        EXPECT_EQ(test.kept == 0, readStill(file.path()).error.empty()) << "readers want it at the start of a file";
        close(fd);
    }
}

TEST(Output, PipeIsATimeOutAndGetsNothing) {
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    Clock::instance().setScale(0.001);
    EXPECT_EQ(-1, writeTo(ends[1]));
    Clock::instance().setScale(1);
    char byte;
    EXPECT_EQ(-1, read(ends[0], &byte, 1)) << "something was written";
    for (const int end : ends) close(end);
}

// The result says that the muxer was told to finish, on purpose nothing about how it did: a caller who must know looks
// at the file. It is as it was before, never a part of a still.
TEST(Output, FullFileSystemIsNoFailureAndLeavesNoStill) {
    const size_t size = stillSize();
    for (const size_t limit : {size_t{0}, size_t{10}, size / 2, size - 1}) {
        const TemporaryFile file;
        {
            const FileSizeLimit full(limit);
            EXPECT_EQ(0, writeTo(file.fd())) << limit;
        }
        EXPECT_EQ(Bytes(), file.bytes()) << limit;
    }
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(0, writeTo(full));
    close(full);
}

}  // namespace
