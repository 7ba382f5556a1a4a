package com.quill.cli;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.util.List;
import org.libjpegturbo.turbojpeg.TJ;
import org.libjpegturbo.turbojpeg.YUVImage;

/**
 * Planes of eight bits, 4:2:0, as TurboJPEG fills them. Each has an array of its own, because a VM may hand out copies
 * of arrays: luma that of the frame, where the format allows it. The others are stored in the frame once they are full.
 */
final class YuvPlanes {
    private static final int kP010Shift = 6;  // the ten bits are the upper ones

    private final FrameLayout mLayout;
    private final byte[] mFrame;
    private final List<Plane> mPlanes;
    private final byte[][] mBuffers = new byte[3][];
    private final int[] mStrides;

    YuvPlanes(FrameLayout layout, byte[] frame) {
        mLayout = layout;
        mFrame = frame;
        mPlanes = Plane.of(layout);
        int width = layout.width();
        int luma = width * layout.height();
        mStrides = new int[] {width, width / 2, width / 2};
        mBuffers[0] = layout.format() == ColorFormat.P010 ? new byte[luma] : frame;
        for (int i = 1; i < mBuffers.length; ++i) mBuffers[i] = new byte[luma / 4];
    }

    /** An even number of rows from an even row on. */
    YUVImage rows(int y, int rows) {
        int chroma = y / 2 * mStrides[1];
        int[] offsets = {y * mStrides[0], chroma, chroma};
        return new YUVImage(mBuffers, offsets, mLayout.width(), mStrides, rows, TJ.SAMP_420);
    }

    /** Brings what lies beside the frame into it. */
    void store() {
        switch (mLayout.format()) {
            case I420:
                for (int i = 1; i < mBuffers.length; ++i) {
                    System.arraycopy(mBuffers[i], 0, mFrame, mPlanes.get(i).start(), mBuffers[i].length);
                }
                break;
            case NV12:
                interleave(mBuffers[1], mBuffers[2]);
                break;
            case NV21:
                interleave(mBuffers[2], mBuffers[1]);
                break;
            case P010:
                storeTenBits();
                break;
            default:
                break;
        }
    }

    private void interleave(byte[] first, byte[] second) {
        int at = mPlanes.get(1).start();
        for (int i = 0; i < first.length; ++i) {
            mFrame[at++] = first[i];
            mFrame[at++] = second[i];
        }
    }

    private void storeTenBits() {
        byte[] luma = mBuffers[0];
        for (int i = 0; i < luma.length; ++i) putLuma(2 * i, luma[i]);
        int chroma = mPlanes.get(1).start();
        for (int i = 0; i < mBuffers[1].length; ++i) {
            putChroma(chroma + 4 * i, mBuffers[1][i]);
            putChroma(chroma + 4 * i + 2, mBuffers[2][i]);
        }
    }

    /** Puts a sample of ten bits at a byte of a P010 frame. */
    static void putTenBits(byte[] frame, int at, int value) {
        int word = value << kP010Shift;
        frame[at] = (byte) word;
        frame[at + 1] = (byte) (word >> 8);
    }

    private void putLuma(int at, byte sample) {
        putTenBits(mFrame, at, ((sample & 0xff) * Bt601.kMaximum + 127) / 255);
    }

    // Around the neutral value, which is exact in either depth.
    private void putChroma(int at, byte sample) {
        int difference = (sample & 0xff) - 128;
        putTenBits(mFrame, at, Math.min(512 + Math.round(difference * Bt601.kMaximum / 255f), Bt601.kMaximum));
    }
}
