#pragma once

#include "Frames.h"
#include "Measuring.h"

namespace quill::bench {

// Single steps of the library on a frame of 12 megapixels with padding, each beside what bounds it. In a process of
// their own, as everything up to heif-enc.
Figures cutTiles(Format format);
Figures swapChroma();
/** From I420, P010 or RGBA to NV12. */
Figures convertFrame(Format format);
Figures makeThumbnail(Format format);
Figures rewriteExif();
Figures appendVideo();

/** Devices of the stand-in, by their encoders. */
constexpr char kFreeCodec[] = "free-codec", kX265[] = "workstation";

// Whole stills on a device of the stand-in, with EXIF block and thumbnail, from making a writer to its end.
/** Free codec. The bound: two polls and 10 ms for every 12 megapixels, at least once. */
Figures stillBesidePolling(Format format, const Geometry& geometry);
/** x265. The bound: x265 alone on the same tiles. */
Figures stillBesideEncoder();
/** Free codec, NV12: what a megapixel of each picture takes. */
Figures timesPerMegapixel(const Geometry& large, const Geometry& small);
Figures peaksPerMegapixel(const Geometry& large, const Geometry& small);
/** The bound: `spare` bytes. */
Figures peakBesideFrame(const char* device, Format format, const Geometry& geometry, double spare);

// The installed quill still beside heif-enc on the same photograph, at the quality that brings its luma nearest to
// ours. The first call looks for that quality and prints a note on it. The calling process starts others: it has to be
// small.
Figures timesBesideHeifEnc();
Figures timesOfTwentyBesideHeifEnc();
Figures peaksBesideHeifEnc();
Figures filesBesideHeifEnc();

}  // namespace quill::bench
