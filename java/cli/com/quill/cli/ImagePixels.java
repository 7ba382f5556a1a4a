package com.quill.cli;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.awt.Graphics2D;
import java.awt.color.ColorSpace;
import java.awt.image.BufferedImage;
import java.awt.image.ColorModel;
import java.awt.image.ComponentColorModel;
import java.awt.image.DataBuffer;
import java.awt.image.Raster;
import java.awt.image.WritableRaster;
import java.io.IOException;
import org.libjpegturbo.turbojpeg.TJ;
import org.libjpegturbo.turbojpeg.TJCompressor;

/** The pixels of a decoded image, converted to sRGB and to a frame a few rows at a time. */
final class ImagePixels implements Pixels {
    private static final int kBandRows = 64;  // even
    private static final String kTransparency = "transparency (white behind it)";

    private final BufferedImage mImage;
    private final ColorConversion mConversion;  // null: the samples are sRGB's
    private final boolean mPlain;               // samples can be taken as they are stored
    private final int mColors;
    private final RgbBand mBand;

    /** {@code conversion} null for an image in sRGB or gray with its curve. */
    ImagePixels(BufferedImage image, ColorConversion conversion) {
        mImage = image;
        mConversion = conversion;
        ColorModel model = image.getColorModel();
        int depth = model.getComponentSize(0);
        int type = image.getRaster().getTransferType();
        boolean whole = depth == 8 && type == DataBuffer.TYPE_BYTE || depth == 16 && type == DataBuffer.TYPE_USHORT;
        mColors = model.getNumColorComponents();
        int space = model.getColorSpace().getType();
        boolean known = conversion != null || space == ColorSpace.TYPE_RGB || space == ColorSpace.TYPE_GRAY;
        mPlain = whole && known && model instanceof ComponentColorModel;
        mBand = new RgbBand(image.getWidth(), kBandRows, bits() > 8);
    }

    @Override
    public int width() {
        return mImage.getWidth();
    }

    @Override
    public int height() {
        return mImage.getHeight();
    }

    @Override
    public int bits() {
        return mPlain ? mImage.getColorModel().getComponentSize(0) : 8;
    }

    @Override
    public boolean isConverted() {
        return mConversion != null;
    }

    @Override
    public void fill(FrameLayout layout, byte[] frame, Losses losses) throws IOException {
        if (mImage.getColorModel().getComponentSize(0) > bits()) losses.add("bits beyond " + bits() + " a sample");
        YuvPlanes planes = isPlanar(layout.format()) ? new YuvPlanes(layout, frame) : null;
        for (int y = 0; y < height(); y += kBandRows) {
            int rows = Math.min(kBandRows, height() - y);
            if (read(y, rows, losses)) losses.add(kTransparency);
            if (planes != null) {
                encode(planes, y, rows);
            } else if (layout.format() == ColorFormat.RGBA8888) {
                putRgba(frame, y, rows);
            } else {
                putTenBits(frame, y, rows);
            }
        }
        if (planes != null) planes.store();
    }

    private static boolean isPlanar(ColorFormat format) {
        return format != ColorFormat.RGBA8888 && format != ColorFormat.P010;
    }

    /** Puts rows into the band; says whether one can be seen through. */
    private boolean read(int y, int rows, Losses losses) {
        WritableRaster target = mBand.rows(rows);
        if (!mPlain) return draw(y, rows, target, losses);
        Raster source = mImage.getRaster();
        int[] bands = mConversion == null && mColors == 1 ? new int[] {0, 0, 0} : firstBands(mColors);
        Raster colors = source.createChild(0, y, width(), rows, 0, 0, bands);
        if (mConversion == null) {
            target.setRect(colors);
        } else {
            mConversion.convert(colors, target, losses);
        }
        return mImage.getColorModel().hasAlpha() && layOnWhite(source, y, rows);
    }

    private static int[] firstBands(int count) {
        int[] bands = new int[count];
        for (int i = 0; i < count; ++i) bands[i] = i;
        return bands;
    }

    private boolean layOnWhite(Raster source, int y, int rows) {
        int[] alpha = source.getSamples(0, y, width(), rows, mColors, (int[]) null);
        return mBand.onWhite(alpha, (1 << bits()) - 1, mImage.getColorModel().isAlphaPremultiplied());
    }

    /** For palettes, packed pixels and color spaces that only the image itself knows. */
    private boolean draw(int y, int rows, WritableRaster target, Losses losses) {
        BufferedImage argb = new BufferedImage(width(), rows, BufferedImage.TYPE_INT_ARGB);
        Graphics2D graphics = argb.createGraphics();
        graphics.drawImage(mImage.getSubimage(0, y, width(), rows), 0, 0, null);
        graphics.dispose();
        Raster drawn = argb.getRaster();
        Raster colors = drawn.createChild(0, 0, width(), rows, 0, 0, firstBands(3));
        if (mConversion != null && mConversion.components() == 3) {
            WritableRaster stored = target.createCompatibleWritableRaster();
            stored.setRect(colors);
            mConversion.convert(stored, target, losses);
        } else {
            target.setRect(colors);
        }
        return mBand.onWhite(drawn.getSamples(0, 0, width(), rows, 3, (int[]) null), 255, false);
    }

    private void encode(YuvPlanes planes, int y, int rows) throws IOException {
        byte[] rgb = mBand.bytes();
        try (TJCompressor yuv = new TJCompressor(rgb, 0, 0, width(), 3 * width(), rows, TJ.PF_RGB)) {
            yuv.setSubsamp(TJ.SAMP_420);
            yuv.encodeYUV(planes.rows(y, rows), 0);
        }
    }

    private void putRgba(byte[] frame, int y, int rows) {
        byte[] rgb = mBand.bytes();
        int to = 4 * y * width();
        for (int from = 0; from < 3 * rows * width(); from += 3, to += 4) {
            System.arraycopy(rgb, from, frame, to, 3);
            frame[to + 3] = (byte) 0xff;
        }
    }

    private void putTenBits(byte[] frame, int top, int rows) {
        int chroma = width() * height();
        for (int y = 0; y < rows; y += 2) {
            int row = 3 * y * width();
            int luma = (top + y) * width();
            for (int x = 0; x < width(); ++x) {
                putLuma(frame, luma + x, row + 3 * x);
                putLuma(frame, luma + width() + x, row + 3 * (x + width()));
            }
            int pair = chroma + (top + y) / 2 * width();
            for (int x = 0; x < width(); x += 2) putChroma(frame, pair + x, row + 3 * x);
        }
    }

    private void putLuma(byte[] frame, int sample, int at) {
        putSample(frame, sample, Bt601.luma(mBand.deep(at), mBand.deep(at + 1), mBand.deep(at + 2)));
    }

    private void putChroma(byte[] frame, int sample, int at) {
        double red = mean(at), green = mean(at + 1), blue = mean(at + 2);
        putSample(frame, sample, Bt601.cb(red, green, blue));
        putSample(frame, sample + 1, Bt601.cr(red, green, blue));
    }

    /** Of one component of two by two pixels. */
    private double mean(int at) {
        int below = at + 3 * width();
        return (mBand.deep(at) + mBand.deep(at + 3) + mBand.deep(below) + mBand.deep(below + 3)) / 4.0;
    }

    private static void putSample(byte[] frame, int sample, int value) {
        YuvPlanes.putTenBits(frame, 2 * sample, value);
    }
}
