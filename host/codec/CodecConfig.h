#pragma once

#include <cstdint>
#include <optional>

#include <media/stagefright/foundation/AMessage.h>
#include <utils/Errors.h>

#include "ColorAspects.h"
#include "PictureLayout.h"

namespace quill::host {

/** The checked configuration of an encoder. */
struct CodecConfig {
    int32_t width = 0;  ///< of one coded picture
    int32_t height = 0;
    int32_t gridRows = 1;
    int32_t gridCols = 1;
    std::optional<SampleLayout> layout;  ///< of input buffers; none for surface input
    std::optional<int> bitDepth;         ///< if the profile determines it
    ColorAspects aspects;
    bool constantQuality = true;
    int32_t quality = 0;  ///< 0-100
    int64_t bitrate = 0;  ///< of a whole image

    int pictureCount() const { return gridRows * gridCols; }
    /** Pixels of a whole image. */
    int64_t framePixels() const { return int64_t{width} * height * pictureCount(); }
    /** Pitch and slice height of input buffers, in samples. */
    int stride() const { return alignedToTile(width); }
    int sliceHeight() const { return alignedToTile(height); }
    /** The picture in an input buffer whose data begins at `data`. For byte-buffer input. */
    SourcePicture describe(const uint8_t* data) const {
        return {*layout, data, width, height, stride(), sliceHeight()};
    }
};

/** BAD_VALUE, with an error in the log, for a format that the encoder does not support. */
android::status_t parseCodecConfig(const android::sp<android::AMessage>& format, CodecConfig* config);

/** A copy of the keys that the output format shares with the configured one: sizes, grid, colors. */
android::sp<android::AMessage> outputFormatOf(const android::sp<android::AMessage>& configured);

}  // namespace quill::host
