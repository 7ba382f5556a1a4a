package com.quill.inspect;

import java.util.Arrays;

/**
 * The small picture that IFD1 points to. The offset counts from the start of the EXIF sample; width and height, in
 * pixels, are 0 when they cannot be read, and the problem says why. The data is null when the sample does not hold it.
 */
record Thumbnail(long offset, long size, int width, int height, String problem, byte[] data) {
    /** The thumbnail of a sample whose TIFF header is at {@code tiff}; null when IFD1 names none. */
    static Thumbnail read(byte[] sample, long tiff, ExifDirectory directory) {
        long at = directory.number(ExifTags.kThumbnailOffset);
        long size = directory.number(ExifTags.kThumbnailSize);
        if (at < 0 && size < 0) {
            boolean strips = directory.number(ExifTags.kStripOffsets) >= 0;
            return strips ? unreadable(-1, -1, "is not JPEG: it is stored as strips of pixels") : null;
        }
        if (at < 0 || size < 0) return unreadable(-1, size, "has no " + (at < 0 ? "offset" : "size"));
        if (!new ByteReader(sample).holds(tiff + at, size)) {
            return unreadable(tiff + at, size, "lies outside the EXIF block of " + sample.length + " bytes");
        }
        byte[] data = Arrays.copyOfRange(sample, (int) (tiff + at), (int) (tiff + at + size));
        try {
            JpegSize pixels = JpegSize.read(new ByteReader(data));
            return new Thumbnail(tiff + at, size, pixels.width(), pixels.height(), null, data);
        } catch (FormatException e) {
            return new Thumbnail(tiff + at, size, 0, 0, e.getMessage(), data);
        }
    }

    private static Thumbnail unreadable(long offset, long size, String why) {
        return new Thumbnail(offset, size, 0, 0, why, null);
    }
}
