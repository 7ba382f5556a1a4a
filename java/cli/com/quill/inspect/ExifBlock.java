package com.quill.inspect;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.List;

/**
 * An EXIF block: "Exif", 0, 0 and a TIFF structure. Blocks come from anywhere, so every read stays inside the block,
 * and what makes no sense counts as absent.
 */
public final class ExifBlock {
    private static final int kUpright = 1;
    private static final int kLastOrientation = 8;
    private static final int kSrgb = 1;
    private static final String kAdobeRgb = "R03";  // DCF's names of its optional color space and the usual one
    private static final String kDcf = "R98";
    private static final byte[] kHeader = {'E', 'x', 'i', 'f', 0, 0};
    private static final int kTiff = kHeader.length;  // where TIFF offsets count from
    private static final int kShortType = 3;

    private final byte[] mBytes;
    private final ByteReader mTiff;  // null when there is no TIFF structure
    private final ByteOrder mOrder;

    /** Over a block that {@link #setUpright} and {@link #setSrgb} change in place; null for none. */
    public ExifBlock(byte[] bytes) {
        mBytes = bytes;
        ByteReader tiff = null;
        ByteOrder order = null;
        try {
            byte[] structure = startsBlock(bytes) ? Arrays.copyOfRange(bytes, kTiff, bytes.length) : new byte[0];
            order = ExifDirectories.orderOf(structure);
            tiff = new ByteReader(structure).order(order);
        } catch (FormatException e) {
            // no block that says anything
        }
        mTiff = tiff;
        mOrder = order;
    }

    /** Whether {@code segment}, or null, begins as a block does. */
    public static boolean startsBlock(byte[] segment) {
        return segment != null && segment.length >= kHeader.length
                && Arrays.equals(segment, 0, kHeader.length, kHeader, 0, kHeader.length);
    }

    /** The block for a TIFF structure that stands by itself. */
    public static byte[] ofTiff(byte[] tiff) {
        byte[] block = Arrays.copyOf(kHeader, kHeader.length + tiff.length);
        System.arraycopy(tiff, 0, block, kHeader.length, tiff.length);
        return block;
    }

    /** The orientation, 1 to 8; upright when the block does not say. */
    public int orientation() {
        int orientation = kUpright;
        for (TiffDirectory.Field field : image().fields()) {
            if (isOrientation(field)) orientation = number(field);
        }
        return orientation >= kUpright && orientation <= kLastOrientation ? orientation : kUpright;
    }

    /** Makes the block say upright wherever it says an orientation of the picture. */
    public void setUpright() {
        for (TiffDirectory.Field field : image().fields()) {
            if (isOrientation(field)) put(field, kUpright);
        }
    }

    /** True for a file of a camera whose colors are those of Adobe RGB, which such files need no profile to say. */
    public boolean isAdobeRgb() {
        int at = interoperabilityAt();
        return at >= 0 && kAdobeRgb.equals(new String(mBytes, at, kAdobeRgb.length(), StandardCharsets.ISO_8859_1));
    }

    /** Makes the block, where it names a color space, name sRGB. */
    public void setSrgb() {
        TiffDirectory.Field space = below(image(), ExifTags.kExifPointer).field(ExifTags.kColorSpace);
        if (space != null && space.type() == kShortType && space.count() == 1) put(space, kSrgb);
        if (!isAdobeRgb()) return;
        System.arraycopy(kDcf.getBytes(StandardCharsets.US_ASCII), 0, mBytes, interoperabilityAt(), kDcf.length());
    }

    /** Where the three characters of the interoperability index stand, or -1. */
    private int interoperabilityAt() {
        TiffDirectory exif = below(image(), ExifTags.kExifPointer);
        TiffDirectory.Field index = below(exif, ExifTags.kInteropPointer).field(ExifTags.kInteropIndex);
        return index == null || index.count() != kAdobeRgb.length() + 1 ? -1 : kTiff + index.valueAt();
    }

    private TiffDirectory image() {
        return mTiff == null ? directory(-1) : directory(long32(4));
    }

    private TiffDirectory below(TiffDirectory parent, int pointer) {
        TiffDirectory.Field field = parent.field(pointer);
        return directory(field == null ? -1 : long32(field.valueAt()));
    }

    /** An empty one when there is nothing at {@code at}. */
    private TiffDirectory directory(long at) {
        try {
            if (mTiff != null && mTiff.holds(at, 2)) return TiffDirectory.read(mTiff, at);
        } catch (FormatException e) {
            // as when it is not there
        }
        return new TiffDirectory(0, List.of(), 0);
    }

    private static boolean isOrientation(TiffDirectory.Field field) {
        return field.tag() == ExifTags.kOrientation && field.type() == kShortType && field.count() == 1;
    }

    private long long32(int at) {
        return mTiff.holds(at, 4) ? Integer.toUnsignedLong(buffer().getInt(kTiff + at)) : -1;
    }

    private int number(TiffDirectory.Field field) {
        return buffer().getShort(kTiff + field.valueAt()) & 0xffff;
    }

    private void put(TiffDirectory.Field field, int value) {
        buffer().putShort(kTiff + field.valueAt(), (short) value);
    }

    private ByteBuffer buffer() {
        return ByteBuffer.wrap(mBytes).order(mOrder);
    }
}
