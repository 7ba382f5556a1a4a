package com.quill.cli;

import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.charset.CharacterCodingException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Locale;

/** The XMP packet that tells viewers where in the file the video of a live photo lies. */
final class MotionPhotoXmp {
    private static final long kMaxPacketBytes = 16 << 20;
    private static final int kBoxHeaderSize = 8;
    private static final String kByteOrderMark = "\uFEFF";

    // The library's packet, word for word; what is filled in, and where further items go.
    private static final String kTemplate = "motion-photo.xmp";
    private static final String kTimestamp = "TimestampUs=\"0000000\"";
    private static final String kVideoMime = "Item:Mime=\"video/mp4\"";
    private static final String kVideoLength = "Item:Length=\"\"";
    private static final String kPrimaryPadding = "Item:Padding=\"0\"";  // the first of two
    private static final String kEndOfItems = "        </rdf:Seq>";
    private static final String kBoxItem = "          <rdf:li rdf:parseType=\"Resource\">\n"
            + "            <Container:Item\n"
            + "              Item:Mime=\"application/octet-stream\"\n"
            + "              Item:Semantic=\"%s\"\n"
            + "              Item:Length=\"%d\"/>\n"
            + "          </rdf:li>\n";

    private MotionPhotoXmp() {}

    /**
     * The packet of a live photo with these sections; a negative size is that of an absent one.
     *
     * <p>The format's readers find the video from the end of the file: they take away the lengths of all items from the
     * video's on. Padding counts for the first item only, where it stands for the header of the box that holds the
     * video. So whatever lies behind the video is listed as whole boxes, their headers within their lengths, and under
     * names and a type of their own: as a "GainMap" a reader would take the header for the picture's beginning.
     */
    static String of(Clip clip, long gainmapBytes, long extenderBytes) throws IOException {
        String packet = template().replace(kVideoLength, "Item:Length=\"" + clip.mBytes + "\"")
                .replace(kVideoMime, "Item:Mime=\"" + clip.mMime + "\"")
                .replaceFirst(kPrimaryPadding, "Item:Padding=\"" + kBoxHeaderSize + "\"");
        if (clip.mDurationUs > 0) {
            // Nobody says which moment the still shows. The middle is what viewers assume then, too.
            packet = packet.replace(kTimestamp,
                    String.format(Locale.ROOT, "TimestampUs=\"%07d\"", clip.mDurationUs / 2));
        }
        return packet.replace(kEndOfItems,
                boxItem("GainMapBox", gainmapBytes) + boxItem("ExtenderBox", extenderBytes) + kEndOfItems);
    }

    /** A packet of the user's own, in UTF-8; an IOException says why it is not one. */
    static String read(Path file) throws IOException {
        if (Files.size(file) > kMaxPacketBytes) throw new IOException("is too large for an XMP packet");
        String text = decode(Files.readAllBytes(file));
        String packet = text.startsWith(kByteOrderMark) ? text.substring(1) : text;
        if (!packet.startsWith("<x:xmpmeta") && !packet.startsWith("<?xpacket")) {
            throw new IOException("is no XMP packet: it begins with neither <x:xmpmeta nor <?xpacket");
        }
        if (packet.indexOf('\0') >= 0) throw new IOException("is no XMP packet: it holds a NUL");
        return packet;
    }

    private static String decode(byte[] bytes) throws IOException {
        try {
            return StandardCharsets.UTF_8.newDecoder().decode(ByteBuffer.wrap(bytes)).toString();
        } catch (CharacterCodingException e) {
            throw new IOException("is not in UTF-8", e);
        }
    }

    private static String boxItem(String semantic, long bytes) {
        return bytes < 0 ? "" : String.format(Locale.ROOT, kBoxItem, semantic, bytes + kBoxHeaderSize);
    }

    private static String template() throws IOException {
        try (InputStream stream = MotionPhotoXmp.class.getResourceAsStream(kTemplate)) {
            if (stream == null) throw new IOException("quill.jar is incomplete: it has no " + kTemplate);
            return new String(stream.readAllBytes(), StandardCharsets.US_ASCII);
        }
    }
}
