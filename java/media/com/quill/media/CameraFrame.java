package com.quill.media;

import android.media.Image;
import java.nio.ByteBuffer;

/**
 * A camera's picture as the writer takes it: three planes in, one array and its layout out. The array is kept and used
 * again for the next picture, so an app needs one object for each writer that it has at work. Not safe for use by
 * several threads at once.
 */
public final class CameraFrame {
    private byte[] mBytes = new byte[0];
    private FrameLayout mLayout;

    /** One plane of a picture; its bytes are only read. */
    public static final class Plane {
        private final ByteBuffer mBytes;
        private final int mRowStride;
        private final int mPixelStride;

        /**
         * A plane of samples, 8 bits each or 10 in the upper bits of 16.
         *
         * @param bytes the samples, from the buffer's position to its limit; behind the last one nothing is needed
         * @param rowStride bytes from one row to the next
         * @param pixelStride bytes from one sample to the next
         */
        public Plane(ByteBuffer bytes, int rowStride, int pixelStride) {
            mBytes = bytes.slice();
            mRowStride = rowStride;
            mPixelStride = pixelStride;
        }

        private void check(String name, int width, int height, int sampleBytes) {
            long row = (long) mPixelStride * (width - 1) + sampleBytes;
            long least = (long) mRowStride * (height - 1) + row;
            if (mPixelStride < sampleBytes || (height > 1 && mRowStride < row) || mBytes.limit() < least) {
                throw new IllegalArgumentException("Plane " + name + " of " + mBytes.limit() + " bytes, " + mRowStride
                        + " a row and " + mPixelStride + " a sample, is no " + width + "x" + height);
            }
        }

        /** {@code count} bytes of a row from its byte {@code from} on. */
        private ByteBuffer bytes(int row, int from, int count) {
            ByteBuffer bytes = mBytes.duplicate();
            int start = row * mRowStride + from;
            bytes.limit(start + count);
            bytes.position(start);
            return bytes;
        }
    }

    /** A frame without a picture. */
    public CameraFrame() {}

    /**
     * Copies a camera's picture: YUV_420_888 or YCBCR_P010.
     *
     * @param image the picture, which can be closed afterwards
     * @throws IllegalArgumentException when it is in another format
     */
    public void copy(Image image) {
        Image.Plane[] planes = image.getPlanes();
        if (planes.length != 3) throw new IllegalArgumentException("An image of format " + image.getFormat() + " is no "
                + "YUV picture");
        copy(image.getWidth(), image.getHeight(), planeOf(planes[0]), planeOf(planes[1]), planeOf(planes[2]));
    }

    /**
     * Copies a picture. Its format comes from the planes: luma samples of two bytes are P010; chroma samples that lie
     * back to back are I420; chroma planes that are two views of the same pairs are NV12 or NV21, and any others are
     * interleaved, which takes longer.
     *
     * @param width picture width in pixels
     * @param height picture height in pixels
     * @param y luma
     * @param u the first chroma plane, Cb, of half the width and height
     * @param v the second, Cr
     * @throws IllegalArgumentException when a plane does not hold its part of the picture; the frame is as before
     */
    public void copy(int width, int height, Plane y, Plane u, Plane v) {
        if (y.mPixelStride != 1 && y.mPixelStride != 2) {
            throw new IllegalArgumentException("Luma samples lie " + y.mPixelStride + " bytes apart, not 1 or 2");
        }
        ColorFormat semiPlanar = y.mPixelStride == 1 ? ColorFormat.NV12 : ColorFormat.P010;
        FrameLayout layout = FrameLayout.evenlyPadded(width, height, semiPlanar);
        int sampleBytes = semiPlanar.sampleBytes();
        y.check("y", width, height, sampleBytes);
        u.check("u", layout.stride() / 2, layout.sliceHeight() / 2, sampleBytes);
        v.check("v", layout.stride() / 2, layout.sliceHeight() / 2, sampleBytes);
        mLayout = null;  // until all of it is there
        if (mBytes.length < layout.frameBytes()) mBytes = new byte[(int) layout.frameBytes()];
        int pitch = layout.stride() * sampleBytes;
        copyRows(y, width * sampleBytes, height, 0, pitch);
        // The row that makes the height even is encoded too: it repeats the one above.
        if (height % 2 != 0) System.arraycopy(mBytes, (height - 1) * pitch, mBytes, height * pitch, pitch);
        ColorFormat format = copyChroma(u, v, layout);
        mLayout = FrameLayout.evenlyPadded(width, height, format);
    }

    /**
     * The array of the last picture, which the next one overwrites.
     *
     * @return at least as long as its layout asks for
     */
    public byte[] bytes() {
        return mBytes;
    }

    /**
     * The layout of the last picture.
     *
     * @return the layout for the writer
     */
    public FrameLayout layout() {
        if (mLayout == null) throw new IllegalStateException("No picture was copied");
        return mLayout;
    }

    private static Plane planeOf(Image.Plane plane) {
        return new Plane(plane.getBuffer(), plane.getRowStride(), plane.getPixelStride());
    }

    private void copyRows(Plane plane, int rowBytes, int rows, int to, int pitch) {
        if (plane.mRowStride == pitch) {
            plane.bytes(0, 0, pitch * (rows - 1) + rowBytes).get(mBytes, to, pitch * (rows - 1) + rowBytes);
            return;
        }
        for (int row = 0; row < rows; ++row) plane.bytes(row, 0, rowBytes).get(mBytes, to + row * pitch, rowBytes);
    }

    /** Copies the chroma planes in an order that the library takes, and says which. */
    private ColorFormat copyChroma(Plane u, Plane v, FrameLayout semiPlanar) {
        boolean wide = semiPlanar.format() == ColorFormat.P010;
        if (!wide && u.mPixelStride == 1 && v.mPixelStride == 1) {
            int width = semiPlanar.stride() / 2;
            int height = semiPlanar.sliceHeight() / 2;
            copyRows(u, width, height, lumaBytes(semiPlanar), width);
            copyRows(v, width, height, lumaBytes(semiPlanar) + width * height, width);
            return ColorFormat.I420;
        }
        if (copyPairs(u, v, semiPlanar)) return semiPlanar.format();
        if (!wide && copyPairs(v, u, semiPlanar)) return ColorFormat.NV21;
        interleave(u, v, semiPlanar);
        return semiPlanar.format();
    }

    /**
     * Copies pairs that begin with {@code first}'s sample, when {@code second} is the same memory one sample on.
     * Buffers do not say where they lie: it is, or might as well be, when it holds the same bytes. Row by row, so that
     * bytes compared are still in a cache when they are copied. False when it is other memory.
     */
    private boolean copyPairs(Plane first, Plane second, FrameLayout layout) {
        int sample = layout.format().sampleBytes();
        int pitch = layout.stride() * sample;
        int shared = pitch - 2 * sample;
        int to = lumaBytes(layout);
        if (first.mPixelStride != 2 * sample || second.mPixelStride != 2 * sample) return false;
        for (int row = 0; row < layout.sliceHeight() / 2; ++row, to += pitch) {
            if (!first.bytes(row, sample, shared).equals(second.bytes(row, 0, shared))) return false;
            first.bytes(row, 0, pitch - sample).get(mBytes, to, pitch - sample);
            second.bytes(row, shared, sample).get(mBytes, to + pitch - sample, sample);
        }
        return true;
    }

    private void interleave(Plane u, Plane v, FrameLayout layout) {
        int sample = layout.format().sampleBytes();
        int width = layout.stride() / 2;
        int to = lumaBytes(layout);
        byte[] uRow = new byte[(width - 1) * u.mPixelStride + sample];
        byte[] vRow = new byte[(width - 1) * v.mPixelStride + sample];
        for (int row = 0; row < layout.sliceHeight() / 2; ++row) {
            u.bytes(row, 0, uRow.length).get(uRow);
            v.bytes(row, 0, vRow.length).get(vRow);
            for (int i = 0; i < width; ++i) {
                for (int k = 0; k < sample; ++k) mBytes[to++] = uRow[i * u.mPixelStride + k];
                for (int k = 0; k < sample; ++k) mBytes[to++] = vRow[i * v.mPixelStride + k];
            }
        }
    }

    private static int lumaBytes(FrameLayout layout) {
        return layout.stride() * layout.sliceHeight() * layout.format().sampleBytes();
    }
}
