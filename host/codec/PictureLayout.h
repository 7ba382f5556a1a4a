#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ColorAspects.h"

namespace quill::host {

/** How a client lays out one picture. */
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

/** Width or height of the buffer that holds `size` rows or columns: buffers come in whole tiles of 512. */
int alignedToTile(int size);

/** Bytes of a buffer of `stride` x `sliceHeight` pixels. */
size_t bufferBytes(SampleLayout layout, int stride, int sliceHeight);

/** Bytes from the start of `picture` to the end of its last sample that `toPlanar` reads. */
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

/** The smallest coding tree unit, and with it the smallest picture that the encoder codes. */
constexpr int kMinCodedSize = 16;

/** Width or height at which a picture of `size` rows or columns is coded. */
int codedSize(int size);

/**
 * Reads `source` into planes of the coded size. What the coded size has beyond the picture repeats the
 * picture's last column and row, which costs the fewest bits and does not bleed into the picture.
 *
 * An odd picture has half a chroma sample at its edge. Clients of the YUV layouts fill in whole samples
 * only (width / 2 of them), so the last whole one is repeated there too.
 */
void toPlanar(const SourcePicture& source, const RgbToYuv& matrix, PlanarPicture* planar);

}  // namespace quill::host
