#define LOG_TAG "QuillPlatform"
#include "TraceFile.h"

#include <errno.h>
#include <fcntl.h>
#include <log/log.h>
#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>

namespace quill::host {

namespace {

constexpr mode_t kFileMode = 0644;
// The system's limit on thread names, with the final NUL.
constexpr size_t kThreadNameSize = 16;

long threadId() { return syscall(SYS_gettid); }

/** Real time and not the scaled clock, because a trace shows where real time goes. */
double nowUs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::micro>(now).count();
}

/** Identifies a file: its address may be used again. */
uint64_t nextNumber() {
    static std::atomic<uint64_t> last{0};
    return ++last;
}

std::string threadName() {
    char name[kThreadNameSize] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    return name;
}

std::string threadMembers() {
    return ",\"pid\":" + std::to_string(getpid()) + ",\"tid\":" + std::to_string(threadId());
}

/** A JSON string, quotes included. Anything but printable ASCII becomes a question mark. */
std::string jsonString(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c >= ' ' && c <= '~' ? c : '?';
    }
    return quoted + '"';
}

}  // namespace

TraceFile::TraceFile(const char* path)
        : mNumber(nextNumber()), mFd(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode)) {
    ALOGE_IF(!isOpen(), "QUILL_TRACE: Cannot write %s: %s", path, strerror(errno));
}

TraceFile::~TraceFile() { close(); }

void TraceFile::write(char phase, const std::string& name) {
    char head[48];
    snprintf(head, sizeof head, "\"ph\":\"%c\",\"ts\":%.3f", phase, nowUs());
    const std::lock_guard<std::mutex> guard(mLock);
    nameThread();
    writeEvent(head + threadMembers() + ",\"name\":" + jsonString(name));
}

/** Names the thread before its first event in this file. */
void TraceFile::nameThread() {
    static thread_local uint64_t namedIn = 0;
    if (namedIn == mNumber) return;
    namedIn = mNumber;
    writeEvent("\"ph\":\"M\"" + threadMembers() +
               ",\"name\":\"thread_name\",\"args\":{\"name\":" + jsonString(threadName()) + "}");
}

void TraceFile::writeEvent(const std::string& members) {
    append((mHasEvents ? ",\n{" : "[\n{") + members + "}");
    mHasEvents = true;
}

void TraceFile::close() {
    const std::lock_guard<std::mutex> guard(mLock);
    if (!isOpen()) return;
    append(mHasEvents ? "\n]\n" : "[]\n");
    ::close(mFd);
    mFd = -1;
}

/** Gives up on an error such as a full disk; the program goes on without. */
void TraceFile::append(const std::string& text) {
    size_t written = 0;
    while (isOpen() && written < text.size()) {
        const ssize_t n = ::write(mFd, text.data() + written, text.size() - written);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        written += static_cast<size_t>(n);
    }
}

}  // namespace quill::host
