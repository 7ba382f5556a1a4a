package com.quill.cli;

/**
 * RGB of eight bits to full-range Y, Cb, Cr with the matrix of ITU-R BT.601, as JFIF uses it, at a depth of eight or
 * ten bits. Fixed point, rounded to the nearest; exact for gray.
 */
final class Bt601 {
    private static final double kRed = 0.299;
    private static final double kBlue = 0.114;
    private static final int kShift = 20;
    private static final int kHalf = 1 << (kShift - 1);
    private static final int kPixelsPerChroma = 4;

    private final int mMaximum;
    private final int mNeutral;  // chroma of gray, already in fixed point
    private final int mLumaRed;
    private final int mLumaGreen;
    private final int mLumaBlue;
    private final int mChromaStrong;
    private final int mCbRed;
    private final int mCrBlue;

    Bt601(int bits) {
        mMaximum = (1 << bits) - 1;
        mNeutral = 1 << (bits - 1 + kShift);
        double luma = mMaximum / 255.0 * (1 << kShift);
        mLumaRed = (int) Math.round(kRed * luma);
        mLumaBlue = (int) Math.round(kBlue * luma);
        mLumaGreen = (int) Math.round(luma) - mLumaRed - mLumaBlue;
        double chroma = luma / kPixelsPerChroma;
        mChromaStrong = (int) Math.round(chroma / 2);
        mCbRed = (int) Math.round(-kRed / (2 * (1 - kBlue)) * chroma);
        mCrBlue = (int) Math.round(-kBlue / (2 * (1 - kRed)) * chroma);
    }

    /** Luma of one 0xRRGGBB pixel. */
    int luma(int rgb) {
        return (mLumaRed * (rgb >> 16 & 0xff) + mLumaGreen * (rgb >> 8 & 0xff) + mLumaBlue * (rgb & 0xff) + kHalf)
                >> kShift;
    }

    /** Cb of four pixels, given as the sums of their components. */
    int cb(int red, int green, int blue) {
        return clamp(mCbRed * red - (mCbRed + mChromaStrong) * green + mChromaStrong * blue);
    }

    /** Cr of four pixels, given as the sums of their components. */
    int cr(int red, int green, int blue) {
        return clamp(mChromaStrong * red - (mChromaStrong + mCrBlue) * green + mCrBlue * blue);
    }

    // Pure blue and red come out half a step above the largest value.
    private int clamp(int difference) {
        return Math.min((difference + mNeutral + kHalf) >> kShift, mMaximum);
    }
}
