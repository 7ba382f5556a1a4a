package com.quill.cli;

import java.util.Arrays;
import java.util.function.IntConsumer;

/**
 * An EXIF block: "Exif", 0, 0 and a TIFF structure. Blocks come from anywhere, so every read stays
 * inside the block, and what makes no sense counts as absent.
 */
final class ExifBlock {
    /** TIFF orientation of a picture that is shown as it is stored. */
    static final int kUpright = 1;

    private static final int kLastOrientation = 8;
    private static final byte[] kHeader = {'E', 'x', 'i', 'f', 0, 0};
    private static final int kTiff = kHeader.length;  // where TIFF offsets count from
    private static final int kTiffHeaderSize = 8;
    private static final int kEntrySize = 12;
    private static final int kValueInEntry = 8;
    private static final int kOrientationTag = 0x0112;
    private static final int kShortType = 3;

    private final byte[] mBytes;

    private ExifBlock(byte[] bytes) {
        mBytes = bytes;
    }

    /** What a block begins with. */
    static byte[] header() {
        return kHeader.clone();
    }

    /** The block for a TIFF structure that stands by itself. */
    static byte[] ofTiff(byte[] tiff) {
        byte[] block = Arrays.copyOf(kHeader, kHeader.length + tiff.length);
        System.arraycopy(tiff, 0, block, kHeader.length, tiff.length);
        return block;
    }

    private static boolean startsWithHeader(byte[] segment) {
        return segment.length >= kHeader.length
                && Arrays.equals(segment, 0, kHeader.length, kHeader, 0, kHeader.length);
    }

    /** The orientation, 1 to 8; upright for a block (or null) that does not say. */
    static int orientation(byte[] block) {
        if (block == null) return kUpright;
        ExifBlock exif = new ExifBlock(block);
        int[] found = {kUpright};
        exif.forEachOrientation(at -> found[0] = exif.u16(at));
        return found[0] >= kUpright && found[0] <= kLastOrientation ? found[0] : kUpright;
    }

    /** Makes the block (or null) say upright wherever it says an orientation of the picture, in place. */
    static void setUpright(byte[] block) {
        if (block == null) return;
        ExifBlock exif = new ExifBlock(block);
        exif.forEachOrientation(at -> exif.putU16(at, kUpright));
    }

    private void forEachOrientation(IntConsumer value) {
        if (!startsWithHeader(mBytes) || !fits(kTiff, kTiffHeaderSize)) return;
        long directory = kTiff + u32(kTiff + 4);
        if (!fits(directory, 2)) return;
        int count = u16((int) directory);
        for (int i = 0; i < count; ++i) {
            long entry = directory + 2 + (long) i * kEntrySize;
            if (!fits(entry, kEntrySize)) return;
            if (isOrientation((int) entry)) value.accept((int) entry + kValueInEntry);
        }
    }

    private boolean isOrientation(int entry) {
        return u16(entry) == kOrientationTag && u16(entry + 2) == kShortType && u32(entry + 4) == 1;
    }

    private boolean fits(long at, int size) {
        return at + size <= mBytes.length;
    }

    private boolean bigEndian() {
        return mBytes[kTiff] == 'M';
    }

    private int u16(int at) {
        int first = mBytes[at] & 0xff;
        int second = mBytes[at + 1] & 0xff;
        return bigEndian() ? first << 8 | second : second << 8 | first;
    }

    private long u32(int at) {
        long first = u16(at);
        long second = u16(at + 2);
        return bigEndian() ? first << 16 | second : second << 16 | first;
    }

    private void putU16(int at, int value) {
        mBytes[at] = (byte) (bigEndian() ? value >> 8 : value);
        mBytes[at + 1] = (byte) (bigEndian() ? value : value >> 8);
    }
}
