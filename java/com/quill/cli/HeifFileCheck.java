package com.quill.cli;

import java.io.EOFException;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.HashSet;
import java.util.Set;

/**
 * Whether a file is a whole HEIF file as far as its outermost boxes (ISO/IEC 14496-12) tell. A disk that fills up while
 * the muxer writes its last bytes leaves a file that only this shows to be cut short.
 */
final class HeifFileCheck {
    private static final int kHeaderSize = 8;
    private static final int kLargeHeaderSize = 16;
    private static final int kSizeUpToEndOfFile = 0;
    private static final int kSizeFollowsType = 1;

    private HeifFileCheck() {}

    /** Returns when the file is whole; an IOException says what is wrong with it. */
    static void check(Path path) throws IOException {
        try (RandomAccessFile file = new RandomAccessFile(path.toFile(), "r")) {
            Set<String> types = walk(file);
            if (!types.contains("meta") || !types.contains("mdat")) {
                throw new IOException("the written file holds no picture");
            }
        } catch (EOFException e) {
            throw incomplete();
        }
    }

    private static Set<String> walk(RandomAccessFile file) throws IOException {
        Set<String> types = new HashSet<>();
        long end = file.length();
        if (end == 0) throw new IOException("the written file is empty");
        for (long at = 0; at < end; ) {
            file.seek(at);
            long size = Integer.toUnsignedLong(file.readInt());
            String type = readType(file);
            if (at == 0 && !type.equals("ftyp")) throw new IOException("the written file is no HEIF file");
            types.add(type);
            at = nextBox(file, at, size, end);
        }
        return types;
    }

    private static long nextBox(RandomAccessFile file, long at, long size, long end) throws IOException {
        if (size == kSizeUpToEndOfFile) return end;
        boolean large = size == kSizeFollowsType;
        long bytes = large ? file.readLong() : size;
        if (bytes < (large ? kLargeHeaderSize : kHeaderSize) || bytes > end - at) throw incomplete();
        return at + bytes;
    }

    private static String readType(RandomAccessFile file) throws IOException {
        byte[] type = new byte[4];
        file.readFully(type);
        return new String(type, StandardCharsets.ISO_8859_1);
    }

    private static IOException incomplete() {
        return new IOException("the written file is incomplete");
    }
}
