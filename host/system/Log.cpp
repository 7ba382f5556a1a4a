#include <android/log.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

namespace {

struct Level {
    const char* name;
    int priority;
};

constexpr Level kLevels[] = {
        {"verbose", ANDROID_LOG_VERBOSE}, {"debug", ANDROID_LOG_DEBUG}, {"info", ANDROID_LOG_INFO},
        {"warn", ANDROID_LOG_WARN},       {"error", ANDROID_LOG_ERROR}, {"silent", ANDROID_LOG_SILENT},
};

// By android_LogPriority.
constexpr char kLetters[] = "??VDIWEF";

std::atomic<int> gLowestPrinted{ANDROID_LOG_SILENT};

void print(const __android_logger_data* line, const char* message) {
    if (line->priority < gLowestPrinted) return;
    const bool known = line->priority >= 0 && line->priority < ANDROID_LOG_SILENT;
    // One call, so that the lines of several threads do not mix.
    fprintf(stderr, "%c %s: %s\n", known ? kLetters[line->priority] : '?', line->tag == nullptr ? "" : line->tag,
            message);
}

int lowestPrinted(const char* level) {
    if (level == nullptr || *level == '\0') return ANDROID_LOG_SILENT;
    for (const Level& known : kLevels) {
        if (strcmp(known.name, level) == 0) return known.priority;
    }
    fprintf(stderr, "QUILL_LOG=%s is not a level; give silent, error, warn, info, debug or verbose\n", level);
    return ANDROID_LOG_SILENT;
}

/**
 * Runs at load, before anything can log. The level is applied in `print` and not as the log's minimum priority, because
 * a logger that a program installs later must see every line.
 */
__attribute__((constructor)) void installLogger() {
    gLowestPrinted = lowestPrinted(getenv("QUILL_LOG"));
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(print);
}

}  // namespace
