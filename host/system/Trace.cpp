// The trace calls, in place of the C utilities' own, which do nothing on a workstation. Those of them that set up
// or configure tracing are declared here as there; what the environment variable QUILL_TRACE says is final.
#include <cutils/trace.h>
#include <stdlib.h>

#include <memory>
#include <string>

#include "TraceFile.h"

namespace {

using quill::host::TraceFile;

/** Null without QUILL_TRACE, which is read at the first use. Never deleted: threads may trace while the process exits.
 */
TraceFile* traceFile() {
    static TraceFile* const file = []() -> TraceFile* {
        const char* const path = getenv("QUILL_TRACE");
        if (path == nullptr || *path == '\0') return nullptr;
        auto opened = std::make_unique<TraceFile>(path);
        if (!opened->isOpen()) return nullptr;
        atexit([] { traceFile()->close(); });
        return opened.release();
    }();
    return file;
}

void record(char phase, const char* name, const std::string& fields = "") {
    TraceFile* const file = traceFile();
    if (file != nullptr) file->write(phase, name, fields);
}

/** Asynchronous sections are told apart by category, name and id. */
std::string asyncFields(int32_t cookie) { return ",\"cat\":\"async\",\"id\":" + std::to_string(cookie); }

std::string counterFields(int64_t value) { return ",\"args\":{\"value\":" + std::to_string(value) + "}"; }

// Sections that this thread has open: an end without a beginning, because tracing was off then, is not recorded.
thread_local int gOpenSections = 0;

}  // namespace

extern "C" {

void atrace_setup() { traceFile(); }
void atrace_init() { traceFile(); }
void atrace_update_tags() {}
void atrace_set_debuggable(bool) {}
void atrace_set_tracing_enabled(bool) {}

uint64_t atrace_get_enabled_tags() { return traceFile() == nullptr ? ATRACE_TAG_NEVER : ATRACE_TAG_VALID_MASK; }

void atrace_begin_body(const char* name) {
    ++gOpenSections;
    record('B', name);
}

void atrace_end_body() {
    if (gOpenSections == 0) return;
    --gOpenSections;
    record('E', "");
}

void atrace_async_begin_body(const char* name, int32_t cookie) { record('b', name, asyncFields(cookie)); }
void atrace_async_end_body(const char* name, int32_t cookie) { record('e', name, asyncFields(cookie)); }
void atrace_int_body(const char* name, int32_t value) { record('C', name, counterFields(value)); }
void atrace_int64_body(const char* name, int64_t value) { record('C', name, counterFields(value)); }

}  // extern "C"
