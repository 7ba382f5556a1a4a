// Boxes of a live photo from sources of any size, by a kernel that interrupts, cuts short, fails and runs full.
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "BoxAppender.h"
#include "ByteSource.h"

namespace {

using namespace quill::fuzz;

constexpr int kSource = 1 << 20, kOutput = kSource + 1;  // no real descriptor is as high

/** The kernel of one input. The source's bytes are those of `held`. */
struct Kernel {
    ByteSource& script;
    int64_t size;  ///< that lseek tells
    std::string held, output;
    size_t offset = 0;
    bool failed = false;

    /** Of `size` bytes: how many are transferred, or -1. */
    ssize_t transfer(size_t size) {
        const int32_t behaviour = script.byte();
        errno = behaviour == 1 ? EINTR : EIO;
        failed = failed || behaviour == 2;
        if (behaviour == 1 || failed) return -1;
        return static_cast<ssize_t>(behaviour < 128 || size == 0 ? size : 1 + static_cast<size_t>(behaviour) % size);
    }
};
Kernel* gKernel = nullptr;

bool isOurs(int fd) { return gKernel != nullptr && (fd == kSource || fd == kOutput); }

}  // namespace

// Found ahead of the C library's.
extern "C" {

ssize_t read(int fd, void* buffer, size_t size) {
    if (!isOurs(fd)) return syscall(SYS_read, fd, buffer, size);
    const ssize_t count = gKernel->transfer(std::min(size, gKernel->held.size() - gKernel->offset));
    if (count < 0) return count;
    gKernel->held.copy(static_cast<char*>(buffer), static_cast<size_t>(count), gKernel->offset);
    gKernel->offset += static_cast<size_t>(count);
    return count;
}

ssize_t write(int fd, const void* data, size_t size) {
    if (!isOurs(fd)) return syscall(SYS_write, fd, data, size);
    const ssize_t count = gKernel->transfer(size);
    if (count > 0) gKernel->output.append(static_cast<const char*>(data), static_cast<size_t>(count));
    return count;
}

off_t lseek(int fd, off_t offset, int whence) noexcept {
    if (!isOurs(fd)) return syscall(SYS_lseek, fd, offset, whence);
    gKernel->offset = 0;
    return whence == SEEK_SET ? 0 : gKernel->size;
}

}  // extern "C"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    Kernel kernel{script, 0, script.bytes(static_cast<size_t>(script.number()) % 10000), {}};
    // Some sources shrink while they are read, or have grown, or tell sizes around 2 and 4 GiB.
    const int32_t kind = script.byte();
    kernel.size = kind < 8 ? (int64_t{kind} << 30) - 1 + script.byte() % 3 : kernel.held.size() + kind % 3 - 1;
    const auto length = static_cast<uint32_t>(kernel.size);
    gKernel = &kernel;
    const bool appended = android::appendFileBox(kOutput, android::kVideoBox, kSource);
    gKernel = nullptr;
    require(appended == (length >> 31 == 0), "refused by its size alone");
    if (!appended) return require(kernel.output.empty(), "nothing written"), 0;
    std::string box{"....mpvd"};
    for (int i = 0; i < 4; ++i) box[i] = static_cast<char>((length + 8) >> (24 - 8 * i));
    box += kernel.held.substr(0, length);
    require(box.compare(0, kernel.output.size(), kernel.output) == 0, "the box, as far as it could be written");
    require(kernel.failed || kernel.output == box, "the box, whole");
    return 0;
}
