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

/** Writes a still to `fd`. All are alike. */
int32_t writeTo(int fd) {
    setProperties("debug.quill.host.encoder=free");
    Still still(makeFrame(FORMAT_NV12, {1000, 700, 1000, 700}));
    return still.writer->processInputFrame(still.frame.bytes.data(), nullptr, 0, fd);
}

size_t stillSize() {
    const TemporaryFile file;
    EXPECT_EQ(0, writeTo(file.fd()));
    return file.bytes().size();
}

TEST(Output, StillBeginsWhereTheDescriptorStandsAndEndsTheFile) {
    const Bytes before = {'b', 'e', 'f', 'o', 'r', 'e'};
    const size_t size = stillSize();
    for (const auto& [flags, offset, kept] :
         {std::tuple(O_WRONLY, 0, 0), {O_RDWR, 3, 3}, {O_WRONLY | O_APPEND, 0, 6}}) {
        const TemporaryFile file(before);
        const int fd = open(file.path().c_str(), flags | O_CLOEXEC);
        lseek(fd, offset, SEEK_SET);
        EXPECT_EQ(0, writeTo(fd)) << flags;
        const Bytes bytes = file.bytes();
        EXPECT_EQ(static_cast<size_t>(kept) + size, bytes.size()) << flags;
        EXPECT_EQ(Bytes(before.begin(), before.begin() + kept), Bytes(bytes.begin(), bytes.begin() + kept)) << flags;
        EXPECT_EQ(static_cast<off_t>(bytes.size()), lseek(fd, 0, SEEK_CUR)) << "for what is appended next";
        EXPECT_EQ(kept == 0, readStill(file.path()).error.empty()) << "readers want it at the start of a file";
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
    signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const size_t limit : {size_t{0}, size_t{10}, size / 2, size - 1}) {
        const TemporaryFile file;
        const rlimit full = {limit, before.rlim_max};  // no file grows beyond, as on a file system that is full then
        setrlimit(RLIMIT_FSIZE, &full);
        EXPECT_EQ(0, writeTo(file.fd())) << limit;
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(Bytes(), file.bytes()) << limit;
    }
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(0, writeTo(full));
    close(full);
}

}  // namespace
