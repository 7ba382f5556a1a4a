#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Frame.h"

namespace quill::test {

using Geometry = android::FrameGeometry;

/** A picture in YCbCr 4:2:0, samples of `depth` bits; chroma planes of ceil(width / 2) x ceil(height / 2). */
struct Planes {
    int width = 0;
    int height = 0;
    int depth = 8;
    std::vector<uint16_t> y, u, v;
};

/** A frame as a camera hands it over, and what it shows. The padding round the picture is far from the picture. */
struct CameraFrame {
    Geometry geometry;
    android::InputColorFormat format;
    std::vector<uint8_t> bytes;
    Planes shown;
};

/** Bytes of a buffer that holds any conversion to NV12 and any read of it, also of odd strides and slice heights. */
inline size_t nv12Bytes(const Geometry& geometry) {
    return size_t(geometry.stride + 1) * size_t(geometry.sliceHeight + 1) * 3 / 2 + 1;
}

/** Bytes of a frame of `geometry` in `format`, padding included. */
size_t frameBytes(android::InputColorFormat format, const Geometry& geometry);

/**
 * A generated scene: smooth gradients in luma and chroma, and fine luma detail that a swap or a shift would spoil.
 * `pan`: pixels by which the camera is turned to the right.
 */
CameraFrame makeFrame(android::InputColorFormat format, const Geometry& geometry, int pan = 0);

/**
 * Decibels between what a frame showed and its still of the same depth and size, of the worst plane. An odd last column
 * or row is left out: the layouts do not carry all of its chroma, and a picture coded whole is rounded up to even
 * sizes.
 */
double psnr(const Planes& frame, const Planes& still);

}  // namespace quill::test
