#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace quill::host {

/** What happens to one platform call in place of its normal course or in addition to it. */
struct Fault {
    enum class Kind {
        kStatus,        ///< the call does nothing and returns `status` (a null pointer where it returns one)
        kLate,          ///< the call sleeps `delayUs` on the stand-in's clock, then goes on
        kStall,         ///< the call blocks until `Faults::release` (a codec's: or its stop), then goes on
        kNothing,       ///< the call succeeds and hands out a null pointer
        kNullBuffer,    ///< the buffer handed out has no memory
        kShortBuffer,   ///< the buffer or the transfer has `size` bytes; a window's buffer is `size` wide
        kFlags,         ///< the coded buffer carries `status` as its flags
        kFormatChange,  ///< an additional format change is reported first
        kNoOutput,      ///< the work is dropped: it never gets an output
    };
    Kind kind = Kind::kStatus;
    int32_t status = 0;
    int64_t delayUs = 0;
    size_t size = 0;

    static Fault failing(int32_t status) { return {Kind::kStatus, status, 0, 0}; }
    static Fault late(int64_t delayUs) { return {Kind::kLate, 0, delayUs, 0}; }
    static Fault stalling() { return {Kind::kStall, 0, 0, 0}; }
    static Fault nothing() { return {Kind::kNothing, 0, 0, 0}; }
    static Fault flags(int32_t flags) { return {Kind::kFlags, flags, 0, 0}; }
    static Fault nullBuffer() { return {Kind::kNullBuffer, 0, 0, 0}; }
    static Fault shortBuffer(size_t size) { return {Kind::kShortBuffer, 0, 0, size}; }
    static Fault formatChange() { return {Kind::kFormatChange, 0, 0, 0}; }
    static Fault noOutput() { return {Kind::kNoOutput, 0, 0, 0}; }
};

/**
 * Faults on demand. Every platform call asks `at` with its own name ("MediaCodec::configure", "property_get"); a test
 * says in advance which occurrence of which call goes wrong, and how. Thread-safe; one registry per process.
 */
class Faults {
  public:
    static Faults& instance();

    /** Occurrences `first` to `first + count - 1` of `call`, counted from 1 since the last `reset`. */
    void inject(const std::string& call, Fault fault, int first = 1, int count = 1);
    /** The number of calls by name since the last `reset`. */
    std::map<std::string, int> occurrences() const;
    /** Lets all stalled calls go on, now and until the next `inject`. */
    void release();
    /** Lets calls go on that are stalled now and whose name begins with `prefix`. */
    void releaseNow(const std::string& prefix);
    /** Forgets all faults and counts; lets stalled calls go on. */
    void reset();

    /**
     * Counts one occurrence of `call` and carries out lateness and stalls. Returns the fault that the caller must carry
     * out itself, or nothing if the call takes its normal course.
     */
    std::optional<Fault> at(const char* call);
    /** `at`, for calls whose only fault is a status. */
    std::optional<int32_t> statusAt(const char* call);

  private:
    Faults() = default;
    std::optional<Fault> count(const char* call);
    void stall(const std::string& call);
};

}  // namespace quill::host
