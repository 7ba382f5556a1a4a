#pragma once

#include <string>
#include <vector>

#include "support/CameraFrames.h"
#include "support/FakeVm.h"
#include "support/TemporaryFiles.h"

namespace quill::test {

/** One way through the library: which input path of the encoder, and what is written. */
struct PhotoCase {
    const char* name;
    std::string device;
    android::InputColorFormat format;
    bool live;
    bool bitmap;
    int width = 1040;  ///< three tiles
};

/** A camera app with one writer, one photograph and its file, on one thread. The EXIF block wants a thumbnail. */
class App {
  public:
    explicit App(const PhotoCase& shown);

    // The native methods.
    void setUp();
    bool isSetUp() const { return handle != 0 && handle != -1; }
    void create();
    long write();
    void destroy();

    /** Other contents in arrays and bitmap, and with `file` another format in the file: all of it is the app's own. */
    void scribble(bool file);
    /** What is no longer as the app left it; empty for nothing. */
    std::string touched();
    /** The boxes behind what the file held before, or what is wrong: " still mpvd", " as it was". */
    std::string fileText() const;
    bool holdsNothing() const;  ///< no array is pinned, no bitmap locked, no text handed out

    const CameraFrame& frame() const;  ///< made once a process, format and size

    PhotoCase photo;
    FakeVm java;
    const TemporaryFile output, video, gainMap;
    FakeVm::Object outputFd, options;
    FakeVm::Array array;
    jlong handle = 0;

  private:
    jobject self() { return FakeVm::asJava(&mObject); }

    FakeVm::Object mObject, mVideoFd, mGainMapFd;
    FakeVm::Array mExif, mExtender;
    FakeVm::Bitmap mBitmap;
    FakeVm::Text mXmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
    bool mScribbledFile = false;
};

}  // namespace quill::test
