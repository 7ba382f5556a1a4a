#pragma once

#include <optional>

#include "HeifItems.h"

namespace quill::host {

/** A file ready to be written: the head, then the bodies without gaps. */
struct HeifLayout {
    Bytes head;  ///< `ftyp`, `meta` and the header of `mdat`
    std::vector<ByteView> bodies;
    uint64_t size = 0;  ///< of all of it
};

/**
 * Lays out the contents to begin at offset `start` of a file; item offsets count from the start of the file. The bodies
 * are views into `contents`. Nothing if a number does not fit its field.
 */
std::optional<HeifLayout> layOutHeif(const HeifContents& contents, uint64_t start);

}  // namespace quill::host
