package com.quill.media;

/**
 * Layout of a frame as the camera hands it over. With S = stride in samples and V = slice height in rows; chroma is
 * subsampled 4:2:0 throughout.
 */
public enum ColorFormat {
    /** Y plane of S x V bytes, then U and V planes of S x V / 4 bytes each, pitch S / 2. */
    I420(0, 1),
    /** 16-bit little-endian samples, value in the upper ten bits: Y plane of S x V, then interleaved U, V. */
    P010(1, 2),
    /** Four bytes a pixel in the order R, G, B, A, pitch 4 x S bytes. */
    RGBA8888(2, 4),
    /** Y plane of S x V bytes, then interleaved U, V bytes, pitch S. */
    NV12(3, 1),
    /** As {@link #NV12} with V before U; the writer leaves the caller's array in NV12 order. */
    NV21(4, 1);

    private final int mCode;
    private final int mSampleBytes;

    ColorFormat(int code, int sampleBytes) {
        mCode = code;
        mSampleBytes = sampleBytes;
    }

    /**
     * The code that the native library knows the format by.
     *
     * @return 0 to 4
     */
    public int code() {
        return mCode;
    }

    /**
     * Bytes of one luma sample, or of one pixel where there is no luma plane.
     *
     * @return 1, 2 or 4
     */
    public int sampleBytes() {
        return mSampleBytes;
    }
}
