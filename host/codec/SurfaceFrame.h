#pragma once

#include <optional>

#include <ui/GraphicBuffer.h>

#include "PictureLayout.h"

namespace quill::host {

/**
 * The `width` x `height` picture at the top left of `frame`, readable while the codec holds the frame. Nothing, with an
 * error in the log, for a format that the codec does not read and for a frame that is too small; such a frame gets no
 * output.
 */
std::optional<SourcePicture> pictureIn(const android::GraphicBuffer& frame, int width, int height);

}  // namespace quill::host
