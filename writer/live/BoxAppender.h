#pragma once

#include <stdint.h>

namespace android {

/** Box types of what follows the still in a live photo's file. */
constexpr char kVideoBox[] = "mpvd";
constexpr char kGainMapBox[] = "gain";
constexpr char kExtenderBox[] = "qext";

/**
 * Appends `source`, read from its start to its end, to `fd` as one box (ISO/IEC 14496-12: 32-bit big-endian size, type,
 * payload), at `fd`'s current offset. Neither descriptor is closed, `fd` never seeked. False, with nothing written,
 * when the source has no size or one of 2 GiB to 4 GiB - 1 bytes; a larger one counts modulo 2^32.
 *
 * Failures after the header are not reported: the box then is shorter than its header says. Interrupted and short reads
 * and writes are continued.
 */
bool appendFileBox(int fd, const char* type, int source);

/** Appends `size` bytes as one box. False when the payload could not be written whole. */
bool appendMemoryBox(int fd, const char* type, const uint8_t* data, uint32_t size);

}  // namespace android
