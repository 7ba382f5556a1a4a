#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ColorAspects.h"
#include "PictureLayout.h"

namespace quill::host {

struct EngineSettings {
    int width = 0;  ///< of the picture; coded at `codedSize`, the rest cropped by the conformance window
    int height = 0;
    int bitDepth = 8;  ///< 8: Main; 10: Main 10
    ColorAspects aspects;
    std::string preset;
    double qp = 20.0;       ///< for pictures that do not ask for another
    bool threaded = false;  ///< spread one picture over all cores; else one thread
};

/**
 * Codes pictures one by one, each an independent IDR picture (ISO/IEC 23008-2). Engines opened with equal
 * settings produce equal parameter sets and equal pictures, so pictures may be spread over several. (One flag
 * of the slice header differs: x265 derives it from the picture's number. It only matters between slices.)
 * For one thread at a time.
 */
class HevcEngine {
  public:
    /** Null, with an error in the log, when the encoder does not take the settings. */
    static std::unique_ptr<HevcEngine> open(const EngineSettings& settings);
    virtual ~HevcEngine() = default;

    /** VPS, SPS and PPS, each behind a four-byte start code. */
    virtual const std::vector<uint8_t>& parameterSets() const = 0;
    /** False when `encode` never looks at its picture, which then need not hold one. */
    virtual bool readsPictures() const { return true; }
    /**
     * Replaces `*coded` by the slices of `picture`, behind four-byte start codes, without parameter sets or
     * SEI. `qp`: whole quantiser in place of the settings' own. False, with an error in the log, on failure.
     */
    virtual bool encode(const PlanarPicture& picture, std::optional<int> qp, std::vector<uint8_t>* coded) = 0;
};

}  // namespace quill::host
