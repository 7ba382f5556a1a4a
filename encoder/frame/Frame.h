#pragma once

#include <stdint.h>

namespace android {

/**
 * Layout of a frame as the camera hands it over, passed from Java as its code. With S = stride in samples and
 * V = slice height in rows; chroma is subsampled 4:2:0 throughout.
 */
enum InputColorFormat : int32_t {
    FORMAT_I420 = 0,      ///< Y plane of S x V bytes, then U and V planes of S x V / 4 bytes each, pitch S / 2
    FORMAT_P010 = 1,      ///< 16-bit little-endian samples: Y plane of S x V, then interleaved U,V of S x V / 2
    FORMAT_RGBA8888 = 2,  ///< 4 bytes a pixel in the order R, G, B, A, pitch 4 x S bytes
    FORMAT_NV12 = 3,      ///< Y plane of S x V bytes, then interleaved U,V bytes, pitch S
    FORMAT_NV21 = 4,      ///< as NV12 with V before U; the writer swaps the pairs before the encoder sees them
};

enum class Chroma : uint8_t { kNone, kPlanar, kInterleaved };

/** How tiles of a format reach the codec. */
enum class TileInput : uint8_t { kBuffers, kSurface, kVendorSurface /**< by surface on two vendors' components */ };

/** The platform's codec color formats, and the vendors' own number for P010 in buffers and on surfaces alike. */
enum CodecColorFormat : int32_t {
    kCodecPlanar = 19,
    kCodecSemiPlanar = 21,
    kCodecSurface = 0x7F000789,
    kVendorP010SemiPlanar = 0x7FA30C0A,
};

/** All that is known of a format. Everybody asks this table; a new format is a row in it. */
struct FrameFormat {
    InputColorFormat code;
    int32_t sampleBytes;  ///< of a luma sample, or of an RGBA pixel
    int32_t bitDepth;     ///< of the still
    Chroma chroma;
    bool hasVBeforeU;
    CodecColorFormat bufferFormat;  ///< of codec input buffers
    TileInput input;

    /** Bytes of `samples` luma samples (or pixels) with their chroma; half a chroma sample is left out. */
    constexpr int64_t bytes(int64_t samples) const {
        return (chroma == Chroma::kNone ? samples : samples + samples / 2) * sampleBytes;
    }
};

/** Null for a code that is not known. */
const FrameFormat* findFrameFormat(int32_t code);

/** Bits of one pixel in the layout `fmt`: 32 for RGBA, 24 for P010, 12 for every other code, known or not. */
int getBitsPerPixel(int fmt);

/** Size of a picture and of the memory that its luma plane is allotted, in samples and rows. */
struct FrameGeometry {
    int32_t width;
    int32_t height;
    int32_t stride;       ///< samples from row to row
    int32_t sliceHeight;  ///< rows of the luma plane; chroma starts stride x sliceHeight samples into the frame

    /** What every product of these relies on: a picture inside the frame, and sizes that fit a signed 32-bit int. */
    bool isSane() const;
    int64_t samples() const { return int64_t{stride} * sliceHeight; }
};

/** How many bytes a frame takes in memory. */
struct FrameBytes {
    int64_t whole;  ///< all planes with their padding
    /**
     * What a caller has to hand over at least. A copy of a camera's plane views ends with the last chroma sample: the
     * padding behind it is missing and, where chroma is interleaved, one sample more.
     */
    int64_t least;
};

/** Of a frame with the format code `colorFormat`; a code that is not known counts as 8-bit semi-planar. */
FrameBytes frameBytes(int32_t colorFormat, const FrameGeometry& geometry);

}  // namespace android
