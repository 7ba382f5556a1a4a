#pragma once

#include <cstdint>
#include <vector>

#include "support/CameraFrames.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

/** Whole stills of one kind: a writer is made, writes one and goes. */
class WholeStill {
  public:
    /** `exif` gets a thumbnail where it has none. */
    WholeStill(android::InputColorFormat format, const test::Geometry& geometry, std::vector<uint8_t> exif);
    /** Throws when the still is not written. `frame` has the format and geometry of the constructor. */
    void write(uint8_t* frame);

  private:
    const android::InputColorFormat mFormat;
    const test::Geometry mGeometry;
    std::vector<uint8_t> mExif;
    const test::TemporaryFile mFile;
};

/** What a still waits for at least: two polls. */
void waitAsPolling();

}  // namespace quill::bench
