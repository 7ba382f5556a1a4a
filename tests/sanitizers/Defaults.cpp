// What the sanitizers' runtimes ask a test program for, when they are there. Suppressions are for code that is not
// ours.

extern "C" {

/** Memory that cannot be had is null, as it is without a sanitizer. */
const char* __asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=2048"; }

const char* __tsan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=2048"; }

/** x265 3.5 keeps some of its own allocations when an encoder is closed: about a kilobyte for each one opened. */
const char* __lsan_default_suppressions() { return "leak:libx265.so\n"; }

/**
 * Debian's libutils is not instrumented, so the order that its reference counts give is not seen: the release of a last
 * reference looks like a race with the uses before it. Nor is x265, whose own threads hand over by its own means.
 */
const char* __tsan_default_suppressions() {
    return "race:android::RefBase::decStrong\n"
           "race:android::RefBase::weakref_type::decWeak\n"
           "race:libx265.so\n";
}

}  // extern "C"
