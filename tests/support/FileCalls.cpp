#include "support/FileCalls.h"

#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include "Clock.h"
#include "Faults.h"

// Where the program's code lies, as its linker says it.
extern "C" const char __executable_start, etext;  // NOLINT(bugprone-reserved-identifier)

namespace {

using quill::host::Fault;
using quill::host::Faults;

std::atomic<bool> watching{false};
std::atomic<int64_t> slept{0};
std::function<void()> polled;

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::optional<Fault> faultAt(const char* call, const void* caller) {
    const char* const from = static_cast<const char*>(caller);
    if (!watching || from < &__executable_start || from >= &etext) return std::nullopt;
    return Faults::instance().at(call);
}

/** `call(size)`, or as much or little of it as a fault leaves. */
template <typename Call>
ssize_t transfer(const std::optional<Fault>& fault, size_t size, Call call) {
    if (!fault) return call(size);
    if (fault->kind == Fault::Kind::kShortBuffer) return call(std::min(size, fault->size));
    errno = -fault->status;
    return -1;
}

}  // namespace

// Found ahead of the C library's. What the caller's address is has to be asked here, in the function that was called.

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
    static auto* const real = next<ssize_t(int, void*, size_t)>("read");
    const std::optional<Fault> fault = faultAt("read", __builtin_return_address(0));
    return transfer(fault, size, [&](size_t part) { return real(fd, buffer, part); });
}

extern "C" ssize_t write(int fd, const void* buffer, size_t size) {
    static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
    const std::optional<Fault> fault = faultAt("write", __builtin_return_address(0));
    return transfer(fault, size, [&](size_t part) { return real(fd, buffer, part); });
}

extern "C" off_t lseek(int fd, off_t offset, int whence) noexcept {
    static auto* const real = next<off_t(int, off_t, int)>("lseek");
    const std::optional<Fault> fault = faultAt("lseek", __builtin_return_address(0));
    return transfer(fault, 0, [&](size_t) { return real(fd, offset, whence); });
}

extern "C" int fcntl(int fd, int command, ...) {
    static auto* const real = next<int(int, int, ...)>("fcntl");
    va_list arguments;
    va_start(arguments, command);
    void* const argument = va_arg(arguments, void*);  // a number or a pointer: one register either way
    va_end(arguments);
    const std::optional<Fault> fault = faultAt("fcntl", __builtin_return_address(0));
    return static_cast<int>(transfer(fault, 0, [&](size_t) { return real(fd, command, argument); }));
}

extern "C" int usleep(useconds_t microseconds) {
    if (watching) {
        slept += microseconds;
        polled();
    }
    if (Faults::instance().statusAt("usleep")) return -1;
    // Not by way of the next one: a sanitizer's would take no notice of locks on the way to the stand-in's.
    quill::host::Clock::instance().sleepUs(microseconds);
    return 0;
}

namespace quill::test {

FileCalls::FileCalls(std::function<void()> onPoll) {
    polled = std::move(onPoll);
    slept = 0;
    watching = true;
}

FileCalls::~FileCalls() { watching = false; }

int64_t FileCalls::sleptUs() { return slept; }

}  // namespace quill::test
