package com.quill.media;

import java.util.Objects;

/** Size and memory layout of one frame. Immutable; every instance describes a frame that the native library takes. */
public final class FrameLayout {
    // The native library computes offsets into a frame, at up to four bytes a sample, as signed 32-bit numbers.
    private static final long kMaxSamples = Integer.MAX_VALUE / 4;

    private final int mWidth;
    private final int mHeight;
    private final int mStride;
    private final int mSliceHeight;
    private final ColorFormat mFormat;

    /**
     * A layout with any padding.
     *
     * @param width picture width in pixels, at least 1
     * @param height picture height in pixels, at least 1
     * @param stride distance of two rows in samples (not bytes), at least the width
     * @param sliceHeight rows reserved for the luma plane, at least the height
     * @param format order and size of the samples
     * @throws IllegalArgumentException when one of them is out of its range
     */
    public FrameLayout(int width, int height, int stride, int sliceHeight, ColorFormat format) {
        Objects.requireNonNull(format, "format");
        check(width >= 1, "Width " + width + " is below 1");
        check(height >= 1, "Height " + height + " is below 1");
        check(stride >= width, "Stride " + stride + " is below the width " + width);
        check(sliceHeight >= height, "Slice height " + sliceHeight + " is below the height " + height);
        check((long) stride * sliceHeight <= kMaxSamples,
                "A frame of " + stride + " x " + sliceHeight + " samples is too large; " + kMaxSamples + " fit");
        mWidth = width;
        mHeight = height;
        mStride = stride;
        mSliceHeight = sliceHeight;
        mFormat = format;
    }

    /**
     * A frame without other padding than what makes stride and slice height even, as 4:2:0 chroma wants them.
     *
     * @param width picture width in pixels, at least 1
     * @param height picture height in pixels, at least 1
     * @param format order and size of the samples
     * @return the layout
     */
    public static FrameLayout evenlyPadded(int width, int height, ColorFormat format) {
        return new FrameLayout(width, height, roundUpToEven(width), roundUpToEven(height), format);
    }

    /**
     * Width of the picture.
     *
     * @return pixels
     */
    public int width() {
        return mWidth;
    }

    /**
     * Height of the picture.
     *
     * @return pixels
     */
    public int height() {
        return mHeight;
    }

    /**
     * Distance of two rows.
     *
     * @return samples
     */
    public int stride() {
        return mStride;
    }

    /**
     * Rows reserved for the luma plane.
     *
     * @return rows
     */
    public int sliceHeight() {
        return mSliceHeight;
    }

    /**
     * Order and size of the samples.
     *
     * @return the format
     */
    public ColorFormat format() {
        return mFormat;
    }

    /**
     * Bytes of the whole frame, padding included.
     *
     * @return fits an array's length
     */
    public long frameBytes() {
        long samples = (long) mStride * mSliceHeight;
        if (mFormat == ColorFormat.RGBA8888) return samples * mFormat.sampleBytes();
        return (samples + samples / 2) * mFormat.sampleBytes();
    }

    /**
     * Bytes that an array must hold at least. A camera's plane views end with the last chroma sample they cover, so a
     * copy of them ends before the padding of the last chroma row, and for interleaved chroma one sample earlier.
     *
     * @return at most {@link #frameBytes}
     */
    public long leastFrameBytes() {
        return frameBytes() - unreadTailSamples() * mFormat.sampleBytes();
    }

    private long unreadTailSamples() {
        switch (mFormat) {
            case RGBA8888:
                return 0;
            case I420:
                return Math.max(0, mStride / 2 - roundUpToEven(mWidth) / 2);
            default:
                return Math.max(0, mStride - roundUpToEven(mWidth)) + 1;
        }
    }

    private static int roundUpToEven(int value) {
        return value + (value & 1);
    }

    private static void check(boolean holds, String message) {
        if (!holds) throw new IllegalArgumentException(message);
    }

    @Override
    public String toString() {
        return mWidth + "x" + mHeight + " " + mFormat + ", stride " + mStride + ", slice height " + mSliceHeight;
    }
}
