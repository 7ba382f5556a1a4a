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

    /** The shortest EXIF block that is given a thumbnail: a TIFF header and an empty directory. */
    static byte[] exif() {
        return new byte[] {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }
}
