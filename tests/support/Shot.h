#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/CameraFrames.h"
#include "support/LogCapture.h"
#include "support/TemporaryFiles.h"

namespace quill::test {

/** One way through the library: which input path of the encoder, and what is written. */
struct Scene {
    const char* name;
    std::string device;
    android::InputColorFormat format;
    bool live;
    bool bitmap;
    int width = 1040;  ///< three tiles
};

/** What the app does about a call into the platform that blocks. */
enum class Patience {
    kUntilDone,  ///< nothing: the frame comes to an end by itself
    kNone,       ///< gives up after the library did, and destroys its writer
    kAfterwards  ///< lets the call go on after the library gave up, and only then destroys its writer
};

/** What one shot left behind. */
struct ShotOutcome {
    /** "0: still mpvd gain qext", "-1 after 10 s: as it was". */
    std::string text() const;

    long result = 0;
    int polls = 0;     ///< of the caller for its frame
    std::string file;  ///< the boxes behind what the file held before, or what is wrong
    double luma = 0;   ///< decibels between frame and still, when asked for
    std::vector<std::string> log;
    int leakedDescriptors = 0;
    int leakedThreads = 0;
    bool released = true;  ///< no array is pinned any more, no bitmap locked
};

/**
 * Takes a photograph through the Java layer, as an app does: setup, create, a frame with an EXIF block that wants a
 * thumbnail, destroy. The file holds something before. Once the looper is done, or `blocked` says that it will not be,
 * the caller's polls take no time any more. The still is read with an independent reader, its pixels too when
 * `decode` says so.
 */
ShotOutcome shoot(const Scene& scene, Patience patience, const std::function<bool()>& blocked, bool decode);
/** With nothing in the way. */
ShotOutcome shoot(const Scene& scene, bool decode = false);

}  // namespace quill::test
