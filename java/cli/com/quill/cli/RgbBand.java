package com.quill.cli;

import java.awt.Point;
import java.awt.image.DataBuffer;
import java.awt.image.DataBufferByte;
import java.awt.image.DataBufferUShort;
import java.awt.image.Raster;
import java.awt.image.WritableRaster;

/** Some rows of R, G, B in samples of eight or sixteen bits, without gaps. */
final class RgbBand {
    private static final int kComponents = 3;
    private static final int kDeepMaximum = 65535;

    private final WritableRaster mRaster;
    private final byte[] mBytes;
    private final short[] mDeep;  // null for eight bits

    RgbBand(int width, int rows, boolean deep) {
        int type = deep ? DataBuffer.TYPE_USHORT : DataBuffer.TYPE_BYTE;
        mRaster = Raster.createInterleavedRaster(type, width, rows, kComponents, new Point());
        DataBuffer data = mRaster.getDataBuffer();
        mDeep = deep ? ((DataBufferUShort) data).getData() : null;
        mBytes = deep ? new byte[mDeep.length] : ((DataBufferByte) data).getData();
    }

    /** The first rows. */
    WritableRaster rows(int rows) {
        return mRaster.createWritableChild(0, 0, mRaster.getWidth(), rows, 0, 0, null);
    }

    /** The samples, in eight bits each. */
    byte[] bytes() {
        if (mDeep == null) return mBytes;
        for (int i = 0; i < mDeep.length; ++i) {
            mBytes[i] = (byte) (((mDeep[i] & kDeepMaximum) * 255 + kDeepMaximum / 2) / kDeepMaximum);
        }
        return mBytes;
    }

    /** A sample in sixteen bits. */
    int deep(int index) {
        return mDeep == null ? (mBytes[index] & 0xff) * (kDeepMaximum / 255) : mDeep[index] & kDeepMaximum;
    }

    /** Lays the rows on white; {@code alpha} counts to {@code maximum}. True if anything could be seen through. */
    boolean onWhite(int[] alpha, int maximum, boolean premultiplied) {
        boolean transparent = false;
        for (int i = 0; i < alpha.length; ++i) {
            if (alpha[i] == maximum) continue;
            transparent = true;
            for (int at = i * kComponents; at < (i + 1) * kComponents; ++at) {
                put(at, mixed(deep(at), (double) alpha[i] / maximum, premultiplied));
            }
        }
        return transparent;
    }

    private static int mixed(int sample, double opacity, boolean premultiplied) {
        double shown = premultiplied ? sample : sample * opacity;
        return (int) Math.min(shown + kDeepMaximum * (1 - opacity) + 0.5, kDeepMaximum);
    }

    private void put(int index, int value) {
        if (mDeep == null) {
            mBytes[index] = (byte) ((value + 128) / 257);
        } else {
            mDeep[index] = (short) value;
        }
    }
}
