package com.quill.inspect;

import java.util.List;

/** A TIFF directory: "IFD0", "IFD1", "Exif", "GPS" or "Interop". The offset counts from the TIFF header. */
record ExifDirectory(String name, long offset, List<ExifEntry> entries) {
    /** The number of the entry with this tag, or -1. */
    long number(int tag) {
        for (ExifEntry entry : entries) {
            if (entry.tag() == tag) return entry.number();
        }
        return -1;
    }
}
