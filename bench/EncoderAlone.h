#pragma once

#include <cstdint>
#include <vector>

#include "codec/CodecConfig.h"
#include "support/CameraFrames.h"

namespace quill::bench {

/** The stand-in's encoder without codec, library and file: the tiles of an NV12 frame, cut beforehand. */
class EncoderAlone {
  public:
    EncoderAlone(uint8_t* frame, const test::Geometry& geometry);
    /** Opens the encoder and codes every tile. Throws when it fails. */
    void encode();

  private:
    const host::CodecConfig mConfig;
    std::vector<std::vector<uint8_t>> mTiles;
};

}  // namespace quill::bench
