#pragma once

#include <vector>

#include "QuillHeifWriter.h"
#include "support/CameraFrames.h"
#include "support/TemporaryFiles.h"

namespace quill::test {

/** A frame, a writer started for it, and the file it goes to. Closed and destroyed at the end. */
struct Still {
    explicit Still(const CameraFrame& frame, int quality = 95, int rotation = 0);
    ~Still();

    /** `processInputFrame` on the frame's own bytes. */
    int32_t write(std::vector<uint8_t> exif = {});

    CameraFrame frame;
    TemporaryFile file;
    android::sp<android::QuillHeifWriter> writer;
};

}  // namespace quill::test
