package com.quill.cli;

import java.awt.Color;
import java.awt.Graphics2D;
import java.awt.color.ColorSpace;
import java.awt.image.BufferedImage;
import java.awt.image.DataBufferByte;
import java.awt.image.DataBufferInt;
import java.awt.image.IndexColorModel;
import java.awt.image.PixelInterleavedSampleModel;
import java.awt.image.Raster;

/** Rows of a decoded image. Transparent pixels are shown on white: a still has no transparency. */
final class ImageRows {
    private ImageRows() {}

    static RgbRows of(BufferedImage image) {
        if (isPackedBgr(image)) return new BgrRows(image);
        boolean gray = image.getColorModel().getColorSpace().getType() == ColorSpace.TYPE_GRAY
                && !(image.getColorModel() instanceof IndexColorModel);
        return gray ? new GrayRows(image) : new DrawnRows(image);
    }

    private static boolean isPackedBgr(BufferedImage image) {
        Raster raster = image.getRaster();
        return image.getType() == BufferedImage.TYPE_3BYTE_BGR && raster.getParent() == null
                && raster.getDataBuffer().getOffset() == 0
                && ((PixelInterleavedSampleModel) raster.getSampleModel()).getScanlineStride() == 3 * image.getWidth();
    }

    private abstract static class Base implements RgbRows {
        final BufferedImage mImage;

        Base(BufferedImage image) {
            mImage = image;
        }

        @Override
        public int width() {
            return mImage.getWidth();
        }

        @Override
        public int height() {
            return mImage.getHeight();
        }
    }

    /** What a JPEG decodes to: by far the most frequent, and read without a detour. */
    private static final class BgrRows extends Base {
        private final byte[] mBytes;

        BgrRows(BufferedImage image) {
            super(image);
            mBytes = ((DataBufferByte) image.getRaster().getDataBuffer()).getData();
        }

        @Override
        public void read(int y, int[] row) {
            int width = width();
            int at = y * width * 3;
            for (int x = 0; x < width; ++x, at += 3) {
                row[x] = (mBytes[at + 2] & 0xff) << 16 | (mBytes[at + 1] & 0xff) << 8 | mBytes[at] & 0xff;
            }
        }
    }

    /** Gray samples as stored: Java takes them for linear light where files mean the same curve as sRGB. */
    private static final class GrayRows extends Base {
        private final int mBands;
        private final int mMaximum;
        private final int[] mSamples;

        GrayRows(BufferedImage image) {
            super(image);
            mBands = image.getRaster().getNumBands();
            mMaximum = (1 << image.getRaster().getSampleModel().getSampleSize(0)) - 1;
            mSamples = new int[image.getWidth() * mBands];
        }

        @Override
        public void read(int y, int[] row) {
            int width = width();
            mImage.getRaster().getPixels(0, y, width, 1, mSamples);
            for (int x = 0; x < width; ++x) {
                long gray = mSamples[x * mBands] * 255L;
                if (mBands > 1) gray = onWhite(gray, mSamples[x * mBands + 1]);
                row[x] = (int) ((gray + mMaximum / 2) / mMaximum) * 0x010101;
            }
        }

        private long onWhite(long gray, long alpha) {
            return (gray * alpha + 255L * mMaximum * (mMaximum - alpha)) / mMaximum;
        }
    }

    /** Everything else, drawn onto a white band of a few rows at a time. Rows are cheapest in ascending order. */
    private static final class DrawnRows extends Base {
        private static final int kBandRows = 64;

        private final BufferedImage mBand;
        private final int[] mPixels;
        private int mBandTop = -1;

        DrawnRows(BufferedImage image) {
            super(image);
            mBand = new BufferedImage(image.getWidth(), kBandRows, BufferedImage.TYPE_INT_RGB);
            mPixels = ((DataBufferInt) mBand.getRaster().getDataBuffer()).getData();
        }

        @Override
        public void read(int y, int[] row) {
            int top = y - y % kBandRows;
            if (top != mBandTop) drawBand(top);
            System.arraycopy(mPixels, (y - top) * width(), row, 0, width());
        }

        private void drawBand(int top) {
            int rows = Math.min(kBandRows, height() - top);
            Graphics2D graphics = mBand.createGraphics();
            graphics.setColor(Color.WHITE);
            graphics.fillRect(0, 0, width(), rows);
            graphics.drawImage(mImage.getSubimage(0, top, width(), rows), 0, 0, null);
            graphics.dispose();
            mBandTop = top;
        }
    }
}
