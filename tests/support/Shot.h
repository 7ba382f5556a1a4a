#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/App.h"
#include "support/LogCapture.h"

namespace quill::test {

/** What becomes of a call into the platform that blocks, and what the app does about it. */
enum class Patience {
    kUntilDone,   ///< nothing blocks: the frame comes to an end by itself
    kNone,        ///< blocks for good; the app destroys its writer once the library has given up
    kStopFails,   ///< the same, and the codec refuses to stop
    kAfterwards,  ///< goes on after the library has given up; then the app destroys its writer
};

/** What one shot left behind. */
struct ShotOutcome {
    /** "0: still mpvd gain qext", "-1 after 10 s: as it was". */
    std::string text() const;

    long result = 0;
    int polls = 0;        ///< of the caller for its frame
    std::string file;     ///< as `App::fileText` tells it
    double luma = 0;      ///< decibels between frame and still, when asked for
    std::string touched;  ///< what is the app's and was changed after -1
    std::vector<std::string> log;
    int leakedDescriptors = 0;
    int leakedThreads = 0;  ///< beyond those that a blocked call may hold, and any once it has gone on
    bool released =
            true;  ///< no array is pinned any more, no bitmap locked, no JNI call made with an exception pending
};

/** The clock's scale for the two seconds that the library waits for a codec that hangs. */
constexpr double kImpatient = 0.02;

/** Threads and descriptors of this process. */
struct Holdings {
    static Holdings now();
    int threads;
    int descriptors;
};
/** How many more than `before` and `held` there are, once those that are ending have ended. */
Holdings leakedSince(const Holdings& before, const Holdings& held = {0, 0});

/** How a shot is taken. */
struct Taking {
    Patience patience = Patience::kUntilDone;
    /** True once the looper will not get any further. */
    std::function<bool()> blocked = [] { return false; };
    bool decode = false;
    /** After -1 the app writes something else to its file. */
    bool reusesFile = false;
    /** By a call that blocks for good: its thread, and what the frame and its muxer have open. */
    Holdings held{1, 2};
};

/**
 * Takes a photograph through the Java layer, as an app does: setup, create, a frame with an EXIF block that wants a
 * thumbnail, destroy. The file holds something before. Once the looper is done, or blocked, the caller's polls take no
 * time any more. After -1 the app puts something else into all that is its own. The still is read with an independent
 * reader, its pixels too when `decode` says so.
 */
ShotOutcome shoot(const Scene& scene, const Taking& taking = {});

/** The app's call. Once the looper is done, or `blocked` says that it is held, polls and waits take no time any more.
 */
long writeHurried(App& app, const LogCapture& log, const std::function<bool()>& blocked);

}  // namespace quill::test
