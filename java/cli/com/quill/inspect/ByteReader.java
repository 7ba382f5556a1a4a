package com.quill.inspect;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;

/** A cursor over bytes in memory, big-endian unless told otherwise. A read past the end is a FormatException. */
final class ByteReader {
    private final ByteBuffer mBytes;

    ByteReader(byte[] bytes) {
        mBytes = ByteBuffer.wrap(bytes);
    }

    ByteReader order(ByteOrder order) {
        mBytes.order(order);
        return this;
    }

    int size() {
        return mBytes.limit();
    }

    int position() {
        return mBytes.position();
    }

    int remaining() {
        return mBytes.remaining();
    }

    /** Whether {@code size} bytes lie at {@code at}; both may be any number. */
    boolean holds(long at, long size) {
        return at >= 0 && size >= 0 && at <= size() && size <= size() - at;
    }

    ByteReader seek(long at) throws FormatException {
        if (!holds(at, 0)) throw tooShort();
        mBytes.position((int) at);
        return this;
    }

    void skip(int count) throws FormatException {
        need(count);
        mBytes.position(mBytes.position() + count);
    }

    int u8() throws FormatException {
        need(1);
        return mBytes.get() & 0xff;
    }

    int u16() throws FormatException {
        need(2);
        return mBytes.getShort() & 0xffff;
    }

    long u32() throws FormatException {
        need(4);
        return Integer.toUnsignedLong(mBytes.getInt());
    }

    int s32() throws FormatException {
        return (int) u32();
    }

    /** The eight bytes as they are: a number above 2^63 comes out negative. */
    long raw64() throws FormatException {
        need(8);
        return mBytes.getLong();
    }

    /** A number that takes {@code width} bytes: 0 (which is 0), 1, 2, 4 or 8. */
    long uint(int width) throws FormatException {
        switch (width) {
            case 0:
                return 0;
            case 1:
                return u8();
            case 2:
                return u16();
            case 4:
                return u32();
            case 8:
                long number = raw64();
                if (number < 0) throw new FormatException("holds a number beyond 63 bits");
                return number;
            default:
                throw new FormatException("has numbers of " + width + " bytes");
        }
    }

    byte[] bytes(int count) throws FormatException {
        need(count);
        byte[] bytes = new byte[count];
        mBytes.get(bytes);
        return bytes;
    }

    String fourCc() throws FormatException {
        return new String(bytes(4), StandardCharsets.ISO_8859_1);
    }

    /** UTF-8 up to a zero byte, which is skipped, or the end. */
    String text() {
        int start = mBytes.position();
        int end = start;
        while (end < size() && mBytes.get(end) != 0) ++end;
        mBytes.position(Math.min(end + 1, size()));
        return new String(mBytes.array(), start, end - start, StandardCharsets.UTF_8);
    }

    private void need(int count) throws FormatException {
        if (count < 0 || mBytes.remaining() < count) throw tooShort();
    }

    private static FormatException tooShort() {
        return new FormatException("ends too early");
    }
}
