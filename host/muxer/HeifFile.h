#pragma once

#include <optional>

#include "HeifItems.h"

namespace quill::host {

/** A file ready to be written: the head, then the bodies, back to back. */
struct HeifLayout {
    Bytes head;  ///< `ftyp`, `meta` and the header of `mdat`
    std::vector<ByteView> bodies;
    uint64_t size = 0;  ///< of all of it
};

/**
 * Lays the contents out to begin at `start` of a file, which the item offsets count in. The bodies are views into
 * `contents`. Nothing when some number does not fit its field.
 */
std::optional<HeifLayout> layOutHeif(const HeifContents& contents, uint64_t start);

}  // namespace quill::host
