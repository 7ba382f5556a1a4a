#pragma once

#include "Effort.h"

namespace quill::bench {

// Each adds the rows of one subject.
void addTileCutting(const Effort& effort);
void addConversions(const Effort& effort);
void addThumbnail(const Effort& effort);
void addLivePhoto(const Effort& effort);
void addFreeCodecStills(const Effort& effort);
void addRealEncoderStills(const Effort& effort);
void addHeifEnc(const Effort& effort);

}  // namespace quill::bench
