// The trace calls, in place of the C utilities' own, which do nothing on a workstation. The environment variable
// QUILL_TRACE names the file.
#include <cutils/trace.h>
#include <stdlib.h>

#include <memory>
#include <string>

#include "TraceFile.h"

namespace {

using quill::host::TraceFile;

/** Null without QUILL_TRACE, which is read at the first use. Never deleted, as threads may trace at exit. */
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

void record(char phase, const char* name) {
    TraceFile* const file = traceFile();
    if (file != nullptr) file->write(phase, name);
}

// The open sections of this thread. An end without a beginning is not recorded.
thread_local int gOpenSections = 0;

}  // namespace

extern "C" {

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

}  // extern "C"
