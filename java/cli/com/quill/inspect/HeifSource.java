package com.quill.inspect;

import java.io.Closeable;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.channels.FileChannel;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;

/** A file that is looked into. Every read is checked against its length, and all reads together against a limit. */
public final class HeifSource implements Closeable {
    /** The most that is read in one piece: far beyond any metadata, far below what memory holds. */
    static final int kMaxPiece = 16 << 20;

    private static final long kMaxTotal = 64L << 20;

    private final FileChannel mChannel;
    private final long mSize;
    private long mRead;

    /** Opens a regular file. */
    public HeifSource(Path path) throws IOException {
        mChannel = FileChannel.open(path, StandardOpenOption.READ);
        mSize = mChannel.size();
    }

    /** Bytes of the file. */
    public long size() {
        return mSize;
    }

    boolean holds(long offset, long size) {
        return offset >= 0 && size >= 0 && offset <= mSize && size <= mSize - offset;
    }

    /** Some bytes; a FormatException when the file does not hold them. */
    public byte[] load(long offset, long size) throws IOException {
        if (!holds(offset, size)) throw new FormatException("lies outside the file");
        if (size > kMaxPiece) throw new FormatException("is too large to be read: " + size + " bytes");
        mRead += size;
        if (mRead > kMaxTotal) throw new FormatException("is not read: the file holds too much metadata");
        ByteBuffer bytes = ByteBuffer.allocate((int) size);
        while (bytes.hasRemaining()) {
            if (mChannel.read(bytes, offset + bytes.position()) < 0) throw new FormatException("lies outside the file");
        }
        return bytes.array();
    }

    @Override
    public void close() throws IOException {
        mChannel.close();
    }
}
