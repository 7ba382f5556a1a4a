package com.quill.cli;

/**
 * RGB of sixteen bits to full-range Y, Cb, Cr of ten bits with the matrix of ITU-R BT.601, which JFIF and the still
 * have, too. Rounded to the nearest; exact for gray.
 */
final class Bt601 {
    /** The largest value of ten bits. */
    static final int kMaximum = 1023;

    private static final double kRed = 0.299;
    private static final double kBlue = 0.114;
    private static final double kGreen = 1 - kRed - kBlue;
    private static final double kScale = kMaximum / 65535.0;
    private static final int kNeutral = (kMaximum + 1) / 2;

    private Bt601() {}

    static int luma(int red, int green, int blue) {
        return (int) ((kRed * red + kGreen * green + kBlue * blue) * kScale + 0.5);
    }

    static int cb(double red, double green, double blue) {
        return chroma((blue - kRed * red - kGreen * green - kBlue * blue) / (2 * (1 - kBlue)));
    }

    static int cr(double red, double green, double blue) {
        return chroma((red - kRed * red - kGreen * green - kBlue * blue) / (2 * (1 - kRed)));
    }

    // Pure blue and red come out half a step above the largest value.
    private static int chroma(double difference) {
        return Math.min((int) (difference * kScale + kNeutral + 0.5), kMaximum);
    }
}
