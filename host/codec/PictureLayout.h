#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ColorAspects.h"

namespace quill::host {

/** The layout of a client's picture. */
enum class SampleLayout {
    kI420,  ///< 8-bit Y, then U, then V; chroma pitch is half the luma pitch
    kNv12,  ///< 8-bit Y, then UV pairs at the luma pitch
    kP010,  ///< as NV12 with 16-bit little-endian samples, ten bits of value at the top
    kRgba,  ///< 8-bit R, G, B, A
};

int bitDepthOf(SampleLayout layout);

/** One picture in a client's memory. */
struct SourcePicture {
    SampleLayout layout;
    const uint8_t* data;
    int width;  ///< of the picture, in pixels
    int height;
    int stride;       ///< pixels from one row to the next
    int sliceHeight;  ///< rows from the start of luma to the start of chroma
};

/** `size` rounded up to whole tiles of 512: width or height of an input buffer. */
int alignedToTile(int size);

/** Bytes of a buffer of `stride` x `sliceHeight` pixels. */
size_t bufferBytes(SampleLayout layout, int stride, int sliceHeight);

/** Bytes from the start of `picture` to the end of the last sample that `toPlanar` reads. */
size_t bytesRead(const SourcePicture& picture);

/** One 4:2:0 picture in three planes; 8-bit samples, or 16-bit ones when `bitDepth` is above 8. */
struct PlanarPicture {
    int width = 0;  ///< as coded: even, and at least `kMinCodedSize`
    int height = 0;
    int bitDepth = 0;
    std::vector<uint8_t> planes[3];

    /** Keeps the memory when the shape stays the same. */
    void reshape(int codedWidth, int codedHeight, int depth);
    size_t bytesPerSample() const { return bitDepth > 8 ? 2 : 1; }
    int planeWidth(int plane) const { return plane == 0 ? width : width / 2; }
    int planeHeight(int plane) const { return plane == 0 ? height : height / 2; }
};

/** The smallest coding tree unit, and so the smallest picture that the encoder codes. */
constexpr int kMinCodedSize = 16;

/** The coded width or height of a picture of `size` columns or rows. */
int codedSize(int size);

/**
 * Reads `source` into planes of the coded size. The area outside the picture repeats its last column and row, so that
 * no foreign colors bleed into it.
 *
 * An odd picture has half a chroma sample at its edge. Clients of the YUV layouts fill in whole samples only
 * (width / 2), so the last whole one is repeated there as well.
 */
void toPlanar(const SourcePicture& source, const RgbToYuv& matrix, PlanarPicture* planar);

}  // namespace quill::host
