package com.quill.inspect;

import java.nio.charset.StandardCharsets;
import java.util.HexFormat;
import java.util.StringJoiner;

/** Values of TIFF entries as text. */
final class ExifValues {
    private static final int kMaxNumbers = 8;
    private static final int kMaxText = 64;
    private static final int kMaxHexBytes = 16;

    private interface Formatter {
        String format(ByteReader in) throws FormatException;
    }

    /** The field types of TIFF by their numbers, from 1 on. */
    enum Type {
        BYTE(1, in -> "" + in.u8()),
        ASCII(1, in -> ""),
        SHORT(2, in -> "" + in.u16()),
        LONG(4, in -> "" + in.u32()),
        RATIONAL(8, in -> in.u32() + "/" + in.u32()),
        SBYTE(1, in -> "" + (byte) in.u8()),
        UNDEFINED(1, in -> ""),
        SSHORT(2, in -> "" + (short) in.u16()),
        SLONG(4, in -> "" + in.s32()),
        SRATIONAL(8, in -> in.s32() + "/" + in.s32()),
        FLOAT(4, in -> "" + Float.intBitsToFloat(in.s32())),
        DOUBLE(8, in -> "" + Double.longBitsToDouble(in.raw64())),
        IFD(4, in -> "" + in.u32());

        final int mSize;
        private final Formatter mFormatter;

        Type(int size, Formatter formatter) {
            mSize = size;
            mFormatter = formatter;
        }

        /** Null for a number that is no type. */
        static Type of(int number) {
            return number >= 1 && number <= values().length ? values()[number - 1] : null;
        }

        boolean isUnsignedInteger() {
            return this == BYTE || this == SHORT || this == LONG || this == IFD;
        }
    }

    private ExifValues() {}

    /** The {@code count} values at the cursor, all of which must be there. */
    static String text(ByteReader in, Type type, long count) throws FormatException {
        if (type == Type.ASCII) return ascii(in, count);
        if (type == Type.UNDEFINED) return undefined(in, count);
        StringJoiner numbers = new StringJoiner(" ");
        for (int i = 0; i < Math.min(count, kMaxNumbers); ++i) numbers.add(type.mFormatter.format(in));
        return count > kMaxNumbers ? numbers + " ... (" + count + " values)" : numbers.toString();
    }

    private static String ascii(ByteReader in, long count) throws FormatException {
        byte[] head = in.bytes((int) Math.min(count, 4 * kMaxText));
        String text = new ByteReader(head).text().stripTrailing();
        return Printable.shortened(Printable.of(text), kMaxText);
    }

    /** Versions are letters; the rest has forms of its own. */
    private static String undefined(ByteReader in, long count) throws FormatException {
        byte[] head = in.bytes((int) Math.min(count, kMaxHexBytes));
        String letters = new String(head, StandardCharsets.ISO_8859_1);
        boolean readable = count > 1 && letters.chars().allMatch(letter -> letter >= ' ' && letter <= '~');
        if (readable) return count > kMaxHexBytes ? letters + "... (" + count + " bytes)" : letters;
        String hex = HexFormat.ofDelimiter(" ").formatHex(head);
        return count > kMaxHexBytes ? hex + " ... (" + count + " bytes)" : hex;
    }
}
