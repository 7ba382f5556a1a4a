package com.quill.inspect;

import java.util.List;

/**
 * A box of ISO/IEC 14496-12. Offset and size, in bytes of the file, include the header; a box that claims more than
 * there is has the size of what there is. The type is four printable characters.
 */
public record Box(String type, long offset, long size, int headerSize, List<Box> children) {
    /** Where the payload begins. */
    public long payloadOffset() {
        return offset + headerSize;
    }

    /** Bytes behind the header. */
    public long payloadSize() {
        return size - headerSize;
    }

    /** Where the next box begins. */
    public long end() {
        return offset + size;
    }

    /** The first box of this type in {@code boxes}, or null. */
    public static Box first(List<Box> boxes, String type) {
        for (Box box : boxes) {
            if (box.type.equals(type)) return box;
        }
        return null;
    }

    Box child(String childType) {
        return first(children, childType);
    }
}
