#pragma once

#include <stdlib.h>

namespace quill::test {

/** Whether a sanitizer or memcheck looks on. What repeats itself for values' sake may then be short. */
inline bool isWatched() { return getenv("QUILL_WATCHED") != nullptr; }

}  // namespace quill::test
