package com.quill.cli;

import com.quill.media.FrameLayout;
import java.io.IOException;

/** The pixels of a photograph, in sRGB once they are in a frame. */
interface Pixels {
    int width();

    int height();

    /** Bits of a sample that can be had; a frame keeps as many of them as its format has. */
    int bits();

    /** Whether the stored colors are others than sRGB's. */
    boolean isConverted();

    /** Fills a frame of this size without padding. What turns out to be lost on the way goes to {@code losses}. */
    void fill(FrameLayout layout, byte[] frame, Losses losses) throws IOException;
}
