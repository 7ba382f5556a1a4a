package com.quill.cli;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.awt.image.BufferedImage;
import java.awt.image.DataBufferByte;
import java.io.IOException;
import org.libjpegturbo.turbojpeg.TJ;
import org.libjpegturbo.turbojpeg.TJDecompressor;
import org.libjpegturbo.turbojpeg.TJException;

/**
 * The pixels of a JPEG file. Planes that are coded 4:2:0 are taken as they are; everything else becomes RGB of the same
 * size first.
 */
final class JpegPixels implements Pixels {
    private static final int kFlags = TJ.FLAG_LIMITSCANS;  // a small file may hold thousands of passes

    private final byte[] mJpeg;
    private final int mWidth;
    private final int mHeight;
    private final int mColors;    // one of TJ.CS_...
    private final int mSampling;  // one of TJ.SAMP_...
    private final ColorConversion mConversion;

    /** An IOException says why the picture cannot be decoded. */
    JpegPixels(byte[] jpeg, byte[] profile, Losses losses) throws IOException {
        mJpeg = jpeg;
        try (TJDecompressor decoder = new TJDecompressor(jpeg)) {
            mWidth = decoder.getWidth();
            mHeight = decoder.getHeight();
            mColors = decoder.getColorspace();
            mSampling = decoder.getSubsamp();
        } catch (TJException e) {
            throw new IOException(reason(e), e);
        } catch (IllegalStateException e) {  // tables alone are a JPEG file, too
            throw new IOException("holds no picture", e);
        }
        mConversion = isFourColors() ? null : ColorConversion.of(profile, isGray() ? 1 : 3, losses);
    }

    /** True for CMYK and YCCK, which are not decoded here. */
    boolean isFourColors() {
        return mColors == TJ.CS_CMYK || mColors == TJ.CS_YCCK;
    }

    @Override
    public int width() {
        return mWidth;
    }

    @Override
    public int height() {
        return mHeight;
    }

    @Override
    public int bits() {
        return 8;
    }

    @Override
    public boolean isConverted() {
        return mConversion != null;
    }

    @Override
    public void fill(FrameLayout layout, byte[] frame, Losses losses) throws IOException {
        boolean asCoded = mConversion == null && layout.format() != ColorFormat.RGBA8888
                && mColors == TJ.CS_YCbCr && mSampling == TJ.SAMP_420;
        if (asCoded) {
            YuvPlanes planes = new YuvPlanes(layout, frame);
            decode(decoder -> decoder.decompressToYUV(planes.rows(0, height()), kFlags), losses);
            planes.store();
        } else {
            new ImagePixels(image(losses), mConversion).fill(layout, frame, losses);
        }
    }

    private boolean isGray() {
        return mColors == TJ.CS_GRAY;
    }

    private BufferedImage image(Losses losses) throws IOException {
        int type = isGray() ? BufferedImage.TYPE_BYTE_GRAY : BufferedImage.TYPE_3BYTE_BGR;
        BufferedImage image = new BufferedImage(width(), height(), type);
        byte[] bytes = ((DataBufferByte) image.getRaster().getDataBuffer()).getData();
        int pixel = isGray() ? TJ.PF_GRAY : TJ.PF_BGR;
        // Chroma becomes 4:2:0 again: what is repeated now averages to what it was, what is smoothed does not.
        int flags = kFlags | TJ.FLAG_FASTUPSAMPLE;
        decode(decoder -> decoder.decompress(bytes, 0, 0, width(), 0, height(), pixel, flags), losses);
        return image;
    }

    private interface Decoding {
        void run(TJDecompressor decoder) throws TJException;
    }

    private void decode(Decoding decoding, Losses losses) throws IOException {
        try (TJDecompressor decoder = new TJDecompressor(mJpeg)) {
            decoding.run(decoder);
        } catch (TJException e) {
            if (!isHarmless(e)) throw new IOException(reason(e), e);
            losses.note("its decoder warns: " + e.getMessage());
        }
    }

    // Whatever a file has between its segments, and headers that name what the data does not have.
    private static boolean isHarmless(TJException e) {
        String text = String.valueOf(e.getMessage());
        boolean picture = text.contains("Corrupt JPEG data") && !text.contains("extraneous bytes")
                || text.contains("Premature end");
        return e.getErrorCode() == TJ.ERR_WARNING && !picture;
    }

    private static String reason(TJException e) {
        String text = String.valueOf(e.getMessage());
        return text.contains("Premature end") ? "is cut short" : "cannot be decoded: " + text;
    }
}
