#pragma once

#include <vector>

#include "QuillHeifWriter.h"
#include "support/CameraFrames.h"
#include "support/TemporaryFiles.h"

namespace quill::test {

/** A frame, a writer started for it, and the file it goes to. Closed and destroyed at the end. */
struct Still {
    explicit Still(const CameraFrame& shot, int rotation = 0) : frame(shot) {
        const Geometry& g = frame.geometry;
        writer->start(g.width, g.height, g.stride, g.sliceHeight, frame.format, 95, rotation);
    }
    ~Still() {
        writer->close();
        writer->destroy();
    }

    /** `processInputFrame` on the frame's own bytes. */
    int32_t write(std::vector<uint8_t> exif = {}) {
        return writer->processInputFrame(frame.bytes.data(), exif.data(), static_cast<uint32_t>(exif.size()),
                                         file.fd());
    }

    CameraFrame frame;
    TemporaryFile file;
    const android::sp<android::QuillHeifWriter> writer = new android::QuillHeifWriter;
};

}  // namespace quill::test
