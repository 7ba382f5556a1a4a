package com.quill.media;

/** Frames and sizes that the tests of the native library share. */
final class Frames {
    static final int kWidth = 96;
    static final int kHeight = 80;

    private Frames() {}

    static FrameLayout layout(ColorFormat format) {
        return FrameLayout.evenlyPadded(kWidth, kHeight, format);
    }

    /** A frame without equal neighbours in its chroma plane. */
    static byte[] frame(FrameLayout layout) {
        byte[] frame = new byte[(int) layout.frameBytes()];
        for (int i = 0; i < frame.length; ++i) frame[i] = (byte) (i * 37 + i / 100);
        return frame;
    }
}
