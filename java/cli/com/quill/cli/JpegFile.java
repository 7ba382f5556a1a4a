package com.quill.cli;

import com.drew.imaging.jpeg.JpegProcessingException;
import com.drew.imaging.jpeg.JpegSegmentData;
import com.drew.imaging.jpeg.JpegSegmentReader;
import com.drew.imaging.jpeg.JpegSegmentType;
import com.drew.lang.SequentialByteArrayReader;
import com.quill.inspect.ExifBlock;
import com.twelvemonkeys.imageio.color.ColorSpaces;
import java.awt.color.ICC_ColorSpace;
import java.io.ByteArrayOutputStream;
import java.io.EOFException;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/** The segments of a JPEG file (ITU-T T.81) ahead of its picture. */
final class JpegFile implements Metadata {
    private static final byte[] kXmp = ascii("http://ns.adobe.com/xap/1.0/\0");
    private static final byte[] kIcc = ascii("ICC_PROFILE\0");
    private static final byte[] kMorePictures = ascii("MPF\0");
    private static final byte[] kIptc = ascii("8BIM\u0004\u0004");
    private static final int kIccHeader = kIcc.length + 2;  // and the number of the piece, and how many there are

    private final JpegSegmentData mSegments;

    /** An IOException when {@code jpeg} does not begin as a JPEG file. */
    JpegFile(byte[] jpeg) throws IOException {
        List<JpegSegmentType> types = List.of(JpegSegmentType.APP1, JpegSegmentType.APP2, JpegSegmentType.APPD,
                JpegSegmentType.COM);
        try {
            mSegments = JpegSegmentReader.readSegments(new SequentialByteArrayReader(jpeg), types);
        } catch (EOFException e) {
            throw new IOException("is cut short", e);
        } catch (JpegProcessingException e) {
            throw new IOException("cannot be decoded: " + e.getMessage(), e);
        }
    }

    @Override
    public byte[] exif() {
        for (byte[] segment : mSegments.getSegments(JpegSegmentType.APP1)) {
            if (ExifBlock.startsBlock(segment)) return segment;
        }
        return null;
    }

    /** The profile comes in numbered pieces. */
    @Override
    public byte[] profile() {
        ByteArrayOutputStream profile = new ByteArrayOutputStream();
        int count = mSegments.getSegmentCount(JpegSegmentType.APP2);
        for (int number = 1; number <= count; ++number) {
            for (byte[] segment : mSegments.getSegments(JpegSegmentType.APP2)) {
                boolean piece = startsWith(segment, kIcc) && segment.length > kIccHeader
                        && (segment[kIcc.length] & 0xff) == number;
                if (piece) profile.write(segment, kIccHeader, segment.length - kIccHeader);
            }
        }
        return profile.size() == 0 ? unwrittenProfile() : profile.toByteArray();
    }

    private byte[] unwrittenProfile() {
        if (!new ExifBlock(exif()).isAdobeRgb()) return null;
        return ((ICC_ColorSpace) ColorSpaces.getColorSpace(ColorSpaces.CS_ADOBE_RGB_1998)).getProfile().getData();
    }

    @Override
    public void addLosses(Losses losses) {
        if (first(JpegSegmentType.APP1, kXmp) != null) losses.add(Losses.kXmp);
        for (byte[] segment : mSegments.getSegments(JpegSegmentType.APPD)) {
            if (contains(segment, kIptc)) losses.add(Losses.kIptc);
        }
        if (mSegments.containsSegment(JpegSegmentType.COM)) losses.add("a comment");
        if (first(JpegSegmentType.APP2, kMorePictures) != null) losses.add(Losses.kMorePictures);
    }

    private byte[] first(JpegSegmentType type, byte[] start) {
        for (byte[] segment : mSegments.getSegments(type)) {
            if (startsWith(segment, start)) return segment;
        }
        return null;
    }

    private static boolean startsWith(byte[] segment, byte[] start) {
        return segment.length >= start.length && Arrays.equals(segment, 0, start.length, start, 0, start.length);
    }

    private static boolean contains(byte[] segment, byte[] bytes) {
        for (int at = 0; at <= segment.length - bytes.length; ++at) {
            if (Arrays.equals(segment, at, at + bytes.length, bytes, 0, bytes.length)) return true;
        }
        return false;
    }

    private static byte[] ascii(String text) {
        return text.getBytes(StandardCharsets.US_ASCII);
    }
}
