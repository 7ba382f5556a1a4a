package com.quill.cli;

import java.io.EOFException;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;

/** Where a box (ISO/IEC 14496-12) lies in a file. */
final class FileBox {
    private static final int kHeaderSize = 8;
    private static final int kLargeHeaderSize = 16;
    private static final int kSizeUpToEnd = 0;
    private static final int kSizeFollowsType = 1;
    private static final int kMaxBoxes = 1 << 16;  // no honest file comes near; a hostile one must not fill the memory

    final String mType;
    final long mPayload;  // offsets in the file: behind the header, and behind the box
    final long mEnd;

    private FileBox(String type, long payload, long end) {
        mType = type;
        mPayload = payload;
        mEnd = end;
    }

    long payloadSize() {
        return mEnd - mPayload;
    }

    /**
     * The boxes that fill {@code start} to {@code end}. An EOFException when they do not: one is cut off, leads behind
     * the end, or is smaller than its own header.
     */
    static List<FileBox> list(RandomAccessFile file, long start, long end) throws IOException {
        List<FileBox> boxes = new ArrayList<>();
        for (long at = start; at < end; at = boxes.get(boxes.size() - 1).mEnd) {
            if (boxes.size() == kMaxBoxes) throw new IOException("more than " + kMaxBoxes + " boxes side by side");
            boxes.add(read(file, at, end));
        }
        return boxes;
    }

    /** The first of a type, or null. */
    static FileBox find(List<FileBox> boxes, String type) {
        for (FileBox box : boxes) {
            if (box.mType.equals(type)) return box;
        }
        return null;
    }

    /** Four characters from the file's position on. */
    static String readType(RandomAccessFile file) throws IOException {
        byte[] type = new byte[4];
        file.readFully(type);
        return new String(type, StandardCharsets.ISO_8859_1);
    }

    private static FileBox read(RandomAccessFile file, long at, long end) throws IOException {
        file.seek(at);
        long size = Integer.toUnsignedLong(file.readInt());
        String type = readType(file);
        if (size == kSizeUpToEnd) return new FileBox(type, at + kHeaderSize, end);
        boolean large = size == kSizeFollowsType;
        long bytes = large ? file.readLong() : size;
        int header = large ? kLargeHeaderSize : kHeaderSize;
        if (bytes < header || bytes > end - at) throw new EOFException("a box leads behind the end");
        return new FileBox(type, at + header, at + bytes);
    }
}
