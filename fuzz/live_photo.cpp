// Sections of a live photo, over sources of any size and a kernel that interrupts, cuts short, fails and runs full.
#include <errno.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <media/stagefright/MediaMuxer.h>

#include "ByteSource.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace {

using namespace android;
using namespace quill::fuzz;

constexpr int kVideo = 1 << 20, kGainMap = kVideo + 1, kOutput = kVideo + 2;  // no real descriptor is as high
constexpr int64_t kGigabyte = int64_t{1} << 30;
constexpr int64_t kOddSizes[] = {-1, 2 * kGigabyte - 1, 2 * kGigabyte, 4 * kGigabyte - 1, 4 * kGigabyte + 5000};

/** What stands behind a descriptor that is read. */
struct Source {
    int64_t size = 0;  ///< that lseek tells
    size_t held = 0;   ///< bytes there are when it is read
    size_t offset = 0;
    Bytes delivered;
    bool ended = false;

    uint32_t sectionSize() const { return static_cast<uint32_t>(size); }
    bool isRefused() const { return sectionSize() >> 31 != 0; }
};

/** The kernel of one input. */
struct Kernel {
    explicit Kernel(ByteSource& bytes) : script(bytes) {}

    ByteSource& script;
    Source video, gainMap;
    Bytes output;
    bool full = false;

    Source& source(int fd) { return fd == kVideo ? video : gainMap; }
};
Kernel* gKernel = nullptr;

bool isOurs(int fd) { return gKernel != nullptr && fd >= kVideo && fd <= kOutput; }

ssize_t failing(int error) {
    errno = error;
    return -1;
}

ssize_t readFrom(Source& source, uint8_t* buffer, size_t size) {
    require(!source.ended, "no read after an end or an error");
    require(source.delivered.size() + size <= source.sectionSize(), "nothing read beyond the size in the header");
    const int behaviour = gKernel->script.number(0, 7);
    if (behaviour == 1) return failing(EINTR);
    if (behaviour == 2) size = std::min(size, gKernel->script.number<size_t>(1, 4096));
    source.ended = behaviour == 3;
    if (source.ended) return failing(EIO);
    const size_t count = std::min(size, source.held - source.offset);
    for (size_t i = 0; i < count; ++i) buffer[i] = static_cast<uint8_t>((source.offset + i) * 31 >> 3);
    source.delivered.insert(source.delivered.end(), buffer, buffer + count);
    source.offset += count;
    source.ended = count == 0;
    return static_cast<ssize_t>(count);
}

ssize_t writeTo(Bytes& output, const uint8_t* data, size_t size) {
    const int behaviour = gKernel->script.number(0, 15);
    if (behaviour == 1) return failing(EINTR);
    if (behaviour == 2) size = std::min(size, gKernel->script.number<size_t>(1, 4096));
    gKernel->full = gKernel->full || (behaviour == 3 && size > 0);
    if (gKernel->full) return behaviour % 2 != 0 ? failing(ENOSPC) : 0;
    output.insert(output.end(), data, data + size);
    return static_cast<ssize_t>(size);
}

Source anySource(ByteSource& script) {
    Source source;
    source.held = script.number<size_t>(0, 20000);
    source.size = static_cast<int64_t>(source.held);
    if (script.number(0, 3) == 3) source.size = script.oneOf(kOddSizes);
    if (script.number(0, 3) == 3) source.held = script.number<size_t>(0, source.held);  // shrank meanwhile
    source.offset = source.held;
    return source;
}

void addSection(Bytes& file, const char* type, uint32_t size, const Bytes& payload) {
    for (int shift = 24; shift >= 0; shift -= 8) file.push_back(static_cast<uint8_t>((size + 8) >> shift));
    file.insert(file.end(), type, type + 4);
    file.insert(file.end(), payload.begin(), payload.end());
}

/** The arguments of a call, and what it is to return and to write. */
struct Call {
    int video, gainMap, output;
    bool hasExtender;
    Bytes extender;

    int expected(const Kernel& kernel, Bytes& file) const {
        if (video == -1 || output == -1 || kernel.video.isRefused()) return -1;
        addSection(file, "mpvd", kernel.video.sectionSize(), kernel.video.delivered);
        if (gainMap != -1 && kernel.gainMap.isRefused()) return -1;
        if (gainMap != -1) addSection(file, "gain", kernel.gainMap.sectionSize(), kernel.gainMap.delivered);
        if (!hasExtender) return 0;
        addSection(file, "qext", static_cast<uint32_t>(extender.size()), extender);
        return kernel.full && !extender.empty() ? -1 : 0;
    }
};

}  // namespace

// Found ahead of the C library's.
extern "C" {

ssize_t read(int fd, void* buffer, size_t size) {
    if (!isOurs(fd)) return syscall(SYS_read, fd, buffer, size);
    require(fd != kOutput, "the output is not read");
    return readFrom(gKernel->source(fd), static_cast<uint8_t*>(buffer), size);
}

ssize_t write(int fd, const void* data, size_t size) {
    if (!isOurs(fd)) return syscall(SYS_write, fd, data, size);
    require(fd == kOutput, "sources are not written");
    return writeTo(gKernel->output, static_cast<const uint8_t*>(data), size);
}

off_t lseek(int fd, off_t offset, int whence) noexcept {
    if (!isOurs(fd)) return syscall(SYS_lseek, fd, offset, whence);
    require(fd != kOutput && offset == 0 && whence != SEEK_CUR, "sources alone are sought, to their end or start");
    Source& source = gKernel->source(fd);
    source.offset = whence == SEEK_SET ? 0 : source.held;
    return whence == SEEK_SET ? 0 : source.size;
}

}  // extern "C"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ByteSource script(data, size);
    Kernel kernel(script);
    kernel.video = anySource(script);
    kernel.gainMap = anySource(script);
    const int absent = script.number(0, 15);
    Call call{absent == 1 ? -1 : kVideo, script.flag() ? kGainMap : -1, absent == 2 ? -1 : kOutput, script.flag(), {}};
    call.extender.reserve(1);  // an empty one has a pointer too
    if (call.hasExtender) call.extender.resize(script.number<size_t>(0, 9000), 0x51);

    gKernel = &kernel;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    const int result = writer->addMotionPhoto(call.video, call.gainMap, call.output,
                                              call.hasExtender ? call.extender.data() : nullptr,
                                              static_cast<uint32_t>(call.extender.size()));
    gKernel = nullptr;

    Bytes file;
    require(result == call.expected(kernel, file), "the result that the arguments and the kernel call for");
    require(kernel.output.size() <= file.size() && std::equal(kernel.output.begin(), kernel.output.end(), file.begin()),
            "sections in their order, as far as they could be written");
    require(kernel.full || kernel.output.size() == file.size(), "sections written whole");
    return 0;
}
