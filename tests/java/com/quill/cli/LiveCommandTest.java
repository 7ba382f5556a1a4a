package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.stream.Stream;
import javax.imageio.ImageIO;
import javax.xml.parsers.DocumentBuilderFactory;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.w3c.dom.Element;
import org.w3c.dom.NodeList;

/** The command in this process, and its files as readers that are not ours see them. */
class LiveCommandTest extends CommandFixture {
    private Path mPhoto;

    @BeforeEach
    void setUp() throws IOException {
        mPhoto = Pictures.writeJpeg(in("photo.jpg"), 160, 96);
    }

    LiveCommandTest() {
        super("live");
    }

    private Path write(String name, String text) throws IOException {
        return Files.writeString(in(name), text, StandardCharsets.ISO_8859_1);
    }

    /** The clip with the first {@code from} in it replaced by as many other characters. */
    private Path clipWith(String from, String to) throws IOException {
        String clip = Files.readString(kClip, StandardCharsets.ISO_8859_1);
        int at = clip.indexOf(from);
        assertTrue(at > 0, from);
        return write("other.mp4", clip.substring(0, at) + to + clip.substring(at + from.length()));
    }

    private static int number(NodeList items, int index, String attribute) {
        String text = ((Element) items.item(index)).getAttribute(attribute);
        return text.isEmpty() ? 0 : Integer.parseInt(text);
    }

    @Test
    void live_ReadersFindTheVideoByItsBoxAndFromTheEndOfTheFile() throws Exception {
        byte[] clip = Files.readAllBytes(kClip);
        write("gain.jpg", "gain map");
        write("extender", "");
        assertEquals(0, run(mPhoto, "--video", kClip, "--gainmap", in("gain.jpg"), "--extender", in("extender")),
                mErr::toString);
        assertTrue(mOut.toString().contains("1.5 s H.264"), mOut.toString());
        Path output = in("photo.MP.heic");
        byte[] extracted = program("exiftool", "-b", "-MotionPhotoVideo", output);
        assertArrayEquals(clip, extracted);
        program("heif-convert", output, in("still.png"));
        assertEquals(160, ImageIO.read(in("still.png").toFile()).getWidth());

        byte[] file = Files.readAllBytes(output);
        byte[] xmp = program("exiftool", "-b", "-XMP", output);
        NodeList items = DocumentBuilderFactory.newInstance().newDocumentBuilder().parse(new ByteArrayInputStream(xmp))
                .getElementsByTagName("Container:Item");
        assertEquals(4, items.getLength());
        int at = file.length;
        for (int i = items.getLength() - 1; i > 0; --i) {
            assertEquals(0, number(items, i, "Item:Padding"), "counts for the first item only");
            at -= number(items, i, "Item:Length");
        }
        assertArrayEquals(clip, Arrays.copyOfRange(file, at, at + number(items, 1, "Item:Length")));
        String header = new String(file, at - number(items, 0, "Item:Padding"), 8, StandardCharsets.ISO_8859_1);
        assertTrue(header.endsWith("mpvd"), "the first item's padding is the video box's header");
    }

    @Test
    void live_OwnPacketArrivesWithEveryCharacter() throws Exception {
        String packet = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"><rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-"
                + "syntax-ns#\"><rdf:Description xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
                + "dc:source=\"Straße \uD83D\uDE00\"/></rdf:RDF></x:xmpmeta>";
        Files.writeString(in("packet.xmp"), "\uFEFF" + packet);
        assertEquals(0, run(mPhoto, "--video", kClip, "--xmp", in("packet.xmp"), "-o", in("out.heic")),
                mErr::toString);
        byte[] source = program("exiftool", "-b", "-XMP-dc:Source", in("out.heic"));
        assertEquals("Straße \uD83D\uDE00", new String(source, StandardCharsets.UTF_8).strip());
    }

    @Test
    void live_UnusableVideosAreNamed() throws IOException {
        assertFails(1, "there is no such file", mPhoto, "--video", in("none.mp4"));
        assertFails(1, "is no MP4 or MOV video", mPhoto, "--video", mPhoto);
        assertFails(1, "is empty", mPhoto, "--video", write("empty.mp4", ""));
        assertFails(1, "no 'moov' box", mPhoto, "--video", clipWith("moov", "free"));
        assertFails(1, "no 'mvhd' box", mPhoto, "--video", clipWith("mvhd", "free"));
        assertFails(1, "no video track", mPhoto, "--video", clipWith("vide", "soun"));
        assertFails(1, "codec (xyz1)", mPhoto, "--video", clipWith("avc1\0", "xyz1\0"));
        assertFails(1, "how long", mPhoto, "--video", clipWith("\0\0\u0003\u00e8\0\0\u0005", "\0\0\0\0\0\0\u0005"));
        byte[] clip = Files.readAllBytes(kClip);
        Path cut = Files.write(in("cut.mp4"), Arrays.copyOf(clip, clip.length - 1));
        assertFails(1, "cut short", mPhoto, "--video", cut);
        assertEquals(0, run(mPhoto, "--video", cut, "--force"), mErr::toString);
        assertTrue(mOut.toString().contains("unchecked"), mOut.toString());
    }

    @Test
    void clip_CutOrScribbledOverIsReadOrRefusedButNeverWorse() throws IOException {
        byte[] clip = Files.readAllBytes(kClip);
        int movie = Pictures.find(clip, "mdat");
        for (int at = 0; at < movie; at += 3) {
            byte[] damaged = clip.clone();
            Arrays.fill(damaged, at, at + 4, (byte) (at % 2 == 0 ? 0xff : 0));
            Path file = Files.write(in("damaged.mp4"), damaged);
            try {
                assertTrue(Clip.read(file).mDurationUs > 0);
            } catch (IOException expected) {
                assertFalse(expected.getMessage().isEmpty());
            }
        }
        for (int length = 0; length < movie; length += 7) {
            Path file = Files.write(in("damaged.mp4"), Arrays.copyOf(clip, length));
            assertThrows(IOException.class, () -> Clip.read(file));
        }
    }

    @Test
    void live_OtherWrongArgumentsWriteNothing() throws IOException {
        assertFails(2, "--video", mPhoto);
        assertFails(1, "the gain map", mPhoto, "--video", kClip, "--gainmap", in("none"));
        assertFails(1, "the extender", mPhoto, "--video", kClip, "--extender", mFolder);
        assertFails(1, "is empty", mPhoto, "--video", kClip, "--gainmap", write("none.jpg", ""));
        assertFails(1, "is no XMP packet", mPhoto, "--video", kClip, "--xmp", write("text", "text"));
        assertFails(1, "not in UTF-8", mPhoto, "--video", kClip, "--xmp", write("latin", "<x:xmpmeta \u00e9>"));
        assertFails(1, "overwrite the photograph", mPhoto, "--video", kClip, "-o", mPhoto);
        Path copy = Files.copy(kClip, in("copy.mp4"));
        assertFails(1, "overwrite the video", mPhoto, "--video", copy, "-o", copy);
        assertArrayEquals(Files.readAllBytes(kClip), Files.readAllBytes(copy));
    }

    @Test
    void check_MissingOrShortPartIsFound() throws IOException {
        assertEquals(0, run(mPhoto, "--video", kClip, "-o", in("out.heic")), mErr::toString);
        LiveContent same = new LiveContent(Clip.read(kClip), null, null, null, null);
        same.check(in("out.heic"));
        LiveContent more = new LiveContent(Clip.read(kClip), mPhoto, null, null, null);
        assertThrows(IOException.class, () -> more.check(in("out.heic")));
        LiveContent longer = new LiveContent(Clip.unchecked(mPhoto), null, null, null, null);
        assertThrows(IOException.class, () -> longer.check(in("out.heic")));
        byte[] file = Files.readAllBytes(in("out.heic"));
        Path cut = Files.write(in("cut.heic"), Arrays.copyOf(file, file.length - 1));
        assertThrows(IOException.class, () -> same.check(cut));
        int stillEnd = file.length - (int) Files.size(kClip) - 8;
        for (int length = 0; length < stillEnd; ++length) {
            Files.write(cut, Arrays.copyOf(file, length));
            assertThrows(IOException.class, () -> HeifFileCheck.check(cut), "cut to " + length);
        }
        Files.write(cut, Arrays.copyOfRange(file, 28, stillEnd));  // without its first box
        assertThrows(IOException.class, () -> HeifFileCheck.check(cut));
        Files.write(cut, Arrays.copyOf(file, stillEnd));
        HeifFileCheck.check(cut);
    }
}
