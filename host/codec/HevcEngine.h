#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "ColorAspects.h"
#include "PictureLayout.h"

namespace quill::host {

struct EngineSettings {
    int width = 0;  ///< of the picture; coded at `codedSize` and cropped by the conformance window
    int height = 0;
    int bitDepth = 8;  ///< 8: Main; 10: Main 10
    ColorAspects aspects;
    std::string preset;
    double qp = 20.0;       ///< for pictures without a quantiser of their own
    bool threaded = false;  ///< spread one picture over all cores; else one thread

    bool operator==(const EngineSettings& other) const {
        const auto fields = [](const EngineSettings& s) {
            return std::tie(s.width, s.height, s.bitDepth, s.aspects, s.preset, s.qp, s.threaded);
        };
        return fields(*this) == fields(other);
    }
};

/**
 * Codes pictures one by one, each as an independent IDR picture (ISO/IEC 23008-2). Engines with equal settings produce
 * equal parameter sets and equal pictures, so pictures may be spread over several. (One flag of the slice header
 * differs: x265 derives it from the picture's number.) For one thread at a time.
 */
class HevcEngine {
  public:
    /** Null, with an error in the log, if the encoder refuses the settings. */
    static std::unique_ptr<HevcEngine> open(const EngineSettings& settings);
    virtual ~HevcEngine() = default;

    /** VPS, SPS and PPS, each after a four-byte start code. */
    virtual const std::vector<uint8_t>& parameterSets() const = 0;
    /** False if `encode` ignores its picture, which may then be empty. */
    virtual bool readsPictures() const { return true; }
    /**
     * Replaces `*coded` by the slices of `picture` after four-byte start codes, without parameter sets or SEI. `qp` is
     * a whole quantiser in place of the settings' own. False, with an error in the log, on failure.
     */
    virtual bool encode(const PlanarPicture& picture, std::optional<int> qp, std::vector<uint8_t>* coded) = 0;
};

}  // namespace quill::host
