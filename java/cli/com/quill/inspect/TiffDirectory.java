package com.quill.inspect;

import java.util.ArrayList;
import java.util.List;

/**
 * A directory of a TIFF structure (TIFF 6.0): how many entries it claims, those that are there, and the offset of the
 * next directory, 0 for none.
 */
record TiffDirectory(int claimed, List<Field> fields, long next) {
    private static final int kEntrySize = 12;
    private static final int kMaxEntries = 1024;

    /** An entry. Its value, or the offset of a value that takes more than four bytes, stands at {@code valueAt}. */
    record Field(int tag, int type, long count, int valueAt) {}

    /** The directory at {@code at} of {@code tiff}, which holds at least two bytes there. */
    static TiffDirectory read(ByteReader tiff, long at) throws FormatException {
        int claimed = tiff.seek(at).u16();
        long first = at + 2;
        int there = Math.min(Math.min(claimed, kMaxEntries), (int) ((tiff.size() - first) / kEntrySize));
        List<Field> fields = new ArrayList<>();
        for (int i = 0; i < there; ++i) {
            tiff.seek(first + (long) i * kEntrySize);
            fields.add(new Field(tiff.u16(), tiff.u16(), tiff.u32(), tiff.position()));
        }
        long end = first + (long) claimed * kEntrySize;
        return new TiffDirectory(claimed, fields, tiff.holds(end, 4) ? tiff.seek(end).u32() : 0);
    }

    /** The first entry with this tag, or null. */
    Field field(int tag) {
        for (Field field : fields) {
            if (field.tag == tag) return field;
        }
        return null;
    }
}
