package com.quill.inspect;

import java.io.ByteArrayOutputStream;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;

/** HEIF files made by hand. */
final class HeifBytes {
    static final String kXmp = "<x:xmpmeta>\u00e4</x:xmpmeta>";
    private static final int kTiff = 6;
    static final int kIfd1 = 8 + 2 + 12 + 4;
    static final int kJpeg = kIfd1 + 2 + 2 * 12 + 4;

    private HeifBytes() {}

    static byte[] join(Object... parts) {
        ByteArrayOutputStream out = new ByteArrayOutputStream();
        for (Object part : parts) {
            byte[] bytes = part instanceof byte[] ? (byte[]) part
                    : part instanceof Integer ? ByteBuffer.allocate(4).putInt((int) part).array()
                    : part instanceof Short ? ByteBuffer.allocate(2).putShort((short) part).array()
                    : part instanceof Byte ? new byte[] {(byte) part}
                    : part.toString().getBytes(StandardCharsets.UTF_8);
            out.writeBytes(bytes);
        }
        return out.toByteArray();
    }

    static byte[] box(String type, Object... parts) {
        byte[] payload = join(parts);
        return join(8 + payload.length, type, payload);
    }

    static short s(int value) {
        return (short) value;
    }

    static byte b(int value) {
        return (byte) value;
    }

    private static byte[] info(int id, String type, int flags, String rest) {
        return box("infe", 2 << 24 | flags, s(id), s(0), type, rest);
    }

    /** A baseline frame header of 160x120 and nothing more. */
    static byte[] jpeg() {
        return join(s(0xffd8), s(0xffdb), s(4), s(0), s(0xffc0), s(11), b(8), s(120), s(160), b(1), b(1), s(0x1100));
    }

    /** A big-endian sample: IFD0 with the orientation 6, IFD1 with {@code jpeg} of 26 bytes or less at kJpeg. */
    static byte[] exif(byte[] jpeg) {
        return join("Exif\0\0", "MM", s(42), 8, s(1), s(0x0112), s(3), 1, s(6), s(0), kIfd1,
                s(2), s(0x0201), s(4), 1, kJpeg, s(0x0202), s(4), 1, jpeg.length, 0, jpeg);
    }

    static byte[] still() {
        return still(exif(jpeg()), 2);
    }

    /** Item 1 is a grid of two tiles (2, 3), item 4 the EXIF data, item 5 XMP; a box of another kind follows. */
    static byte[] still(byte[] exif, int columns) {
        byte[] file = still(exif, columns, 0);
        int bodies = new String(file, StandardCharsets.ISO_8859_1).indexOf("mdat") + 4;
        return still(exif, columns, bodies);
    }

    private static byte[] still(byte[] exif, int columns, int at) {
        byte[] body = join(kTiff, exif);
        byte[] xmp = kXmp.getBytes(StandardCharsets.UTF_8);
        byte[] locations = box("iloc", 1 << 24, s(0x4400), s(5), place(1, 1, 0, 8), place(2, 0, at, 10),
                place(3, 0, at + 10, 20), place(4, 0, at + 30, body.length),
                place(5, 0, at + 30 + body.length, xmp.length));
        byte[] infos = box("iinf", 0, s(5), info(1, "grid", 0, "\0"), info(2, "hvc1", 1, "\0"),
                info(3, "hvc1", 1, "\0"), info(4, "Exif", 0, "\0"), info(5, "mime", 0, "\0application/rdf+xml\0"));
        byte[] references = box("iref", 0, box("dimg", s(1), s(2), s(2), s(3)), box("cdsc", s(4), s(1), s(1)));
        byte[] properties = box("iprp",
                box("ipco", box("ispe", 0, 1000, 500), box("ispe", 0, 512, 512), box("irot", b(3)), box("zzzz", 7)),
                box("ipma", 0, 3, s(1), b(3), b(1), b(0x83), b(4), s(2), b(1), b(2), s(3), b(1), b(2)));
        byte[] grid = join(b(0), b(0), b(0), b(columns - 1), s(1000), s(500));
        return join(box("ftyp", "heic", 0, "mif1", "heic"),
                box("meta", 0, box("pitm", 0, s(1)), locations, infos, references, properties, box("idat", grid)),
                box("mdat", new byte[30], body, xmp), box("mpvd", new byte[5]));
    }

    private static byte[] place(int id, int construction, int offset, int size) {
        return join(s(id), s(construction), s(0), s(1), offset, size);
    }
}
