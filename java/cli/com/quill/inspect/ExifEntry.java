package com.quill.inspect;

/**
 * An entry of a TIFF directory. The name is null for a tag that is not known; the value is shortened text, which a
 * terminal can take; the number is the first one of an integer type, -1 when there is none.
 */
record ExifEntry(int tag, String name, String type, long count, String value, long number) {}
