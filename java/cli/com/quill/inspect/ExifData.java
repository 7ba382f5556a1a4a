package com.quill.inspect;

import java.nio.ByteOrder;
import java.util.List;

/**
 * An EXIF item: the sample as it is stored behind the four-byte offset field, where in it the TIFF header is, and what
 * is in the directories. Notes tell what could not be read. Null or empty is what is not there.
 */
record ExifData(long itemId, byte[] sample, long tiffOffset, ByteOrder order, List<ExifDirectory> directories,
        Thumbnail thumbnail, List<String> notes) {}
