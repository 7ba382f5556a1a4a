package com.quill.cli;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.util.Arrays;

/**
 * Turns pixels into a camera frame. Chroma is the mean of two by two pixels; what a frame has beyond the picture's
 * edges repeats the edge.
 */
final class FrameConverter {
    private static final int kTenBits = 10;
    private static final int kP010Shift = 16 - kTenBits;  // the ten bits are the upper ones

    private FrameConverter() {}

    /** The picture as a frame of {@code layout}, whose width and height are the picture's. */
    static byte[] convert(RgbRows picture, FrameLayout layout) {
        byte[] frame = new byte[Math.toIntExact(layout.frameBytes())];
        if (layout.format() == ColorFormat.RGBA8888) {
            fillRgba(picture, layout, frame);
        } else {
            new YuvFrame(layout, frame).fill(picture);
        }
        return frame;
    }

    private static void fillRgba(RgbRows picture, FrameLayout layout, byte[] frame) {
        int[] row = new int[layout.stride()];
        int at = 0;
        for (int y = 0; y < layout.sliceHeight(); ++y) {
            readPadded(picture, y, row);
            for (int pixel : row) {
                frame[at++] = (byte) (pixel >> 16);
                frame[at++] = (byte) (pixel >> 8);
                frame[at++] = (byte) pixel;
                frame[at++] = (byte) 0xff;
            }
        }
    }

    private static void readPadded(RgbRows picture, int y, int[] row) {
        picture.read(Math.min(y, picture.height() - 1), row);
        Arrays.fill(row, picture.width(), row.length, row[picture.width() - 1]);
    }

    /** The planes of one 4:2:0 frame; positions and pitches in samples. */
    private static final class YuvFrame {
        private final FrameLayout mLayout;
        private final byte[] mFrame;
        private final boolean mDeep;
        private final Bt601 mMatrix;
        private final int mCbStart;
        private final int mCrStart;
        private final int mChromaPitch;
        private final int mChromaStep;

        YuvFrame(FrameLayout layout, byte[] frame) {
            mLayout = layout;
            mFrame = frame;
            mDeep = layout.format() == ColorFormat.P010;
            mMatrix = new Bt601(mDeep ? kTenBits : 8);
            boolean planar = layout.format() == ColorFormat.I420;
            boolean crFirst = layout.format() == ColorFormat.NV21;
            int luma = layout.stride() * layout.sliceHeight();
            mCbStart = crFirst ? luma + 1 : luma;
            mCrStart = planar ? luma + luma / 4 : crFirst ? luma : luma + 1;
            mChromaPitch = planar ? layout.stride() / 2 : layout.stride();
            mChromaStep = planar ? 1 : 2;
        }

        void fill(RgbRows picture) {
            int[] upper = new int[mLayout.stride()];
            int[] lower = new int[mLayout.stride()];
            for (int y = 0; y < mLayout.sliceHeight(); y += 2) {
                readPadded(picture, y, upper);
                readPadded(picture, y + 1, lower);
                fillLuma(upper, y);
                fillLuma(lower, y + 1);
                fillChroma(upper, lower, y / 2 * mChromaPitch);
            }
        }

        private void fillLuma(int[] row, int y) {
            int at = y * mLayout.stride();
            for (int pixel : row) put(at++, mMatrix.luma(pixel));
        }

        private void fillChroma(int[] upper, int[] lower, int rowStart) {
            int at = rowStart;
            for (int x = 0; x < upper.length; x += 2, at += mChromaStep) {
                int red = 0;
                int green = 0;
                int blue = 0;
                for (int i = x; i < x + 2; ++i) {
                    red += (upper[i] >> 16 & 0xff) + (lower[i] >> 16 & 0xff);
                    green += (upper[i] >> 8 & 0xff) + (lower[i] >> 8 & 0xff);
                    blue += (upper[i] & 0xff) + (lower[i] & 0xff);
                }
                put(mCbStart + at, mMatrix.cb(red, green, blue));
                put(mCrStart + at, mMatrix.cr(red, green, blue));
            }
        }

        private void put(int sample, int value) {
            if (!mDeep) {
                mFrame[sample] = (byte) value;
                return;
            }
            int word = value << kP010Shift;
            mFrame[2 * sample] = (byte) word;
            mFrame[2 * sample + 1] = (byte) (word >> 8);
        }
    }
}
