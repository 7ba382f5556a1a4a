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
import java.nio.file.StandardCopyOption;
import javax.xml.parsers.DocumentBuilderFactory;
import javax.xml.xpath.XPath;
import javax.xml.xpath.XPathFactory;
import org.junit.jupiter.api.Test;
import org.w3c.dom.Document;

/** The command in this process, and its files as readers that are not ours see them. */
class LiveCommandTest extends CommandFixture {
    LiveCommandTest() {
        super("live");
    }

    private Path write(String name, String text) throws IOException {
        return Files.writeString(in(name), text, StandardCharsets.ISO_8859_1);
    }

    private void assertVideoFails(String why, String from, String to) throws IOException {
        Path clip = Files.copy(kClip, in("other.mp4"), StandardCopyOption.REPLACE_EXISTING);
        Pictures.change(clip, text -> text.replaceFirst(from, to));
        assertFails(1, why, mPhoto, "--video", clip);
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
        assertArrayEquals(clip, program("exiftool", "-b", "-MotionPhotoVideo", output));
        program("heif-convert", output, in("still.png"));
        Document xmp = DocumentBuilderFactory.newInstance().newDocumentBuilder()
                .parse(new ByteArrayInputStream(program("exiftool", "-b", "-XMP", output)));
        XPath path = XPathFactory.newInstance().newXPath();
        int behind = Integer.parseInt(path.evaluate("sum(//@*[name()='Item:Length'])", xmp));
        int padding = Integer.parseInt(path.evaluate("//*[@*='Primary']/@*[name()='Item:Padding']", xmp));
        assertEquals("" + padding, path.evaluate("sum(//@*[name()='Item:Padding'])", xmp), "the first item's only");
        assertEquals("" + clip.length, path.evaluate("//*[@*='MotionPhoto']/@*[name()='Item:Length']", xmp));
        String file = Files.readString(output, StandardCharsets.ISO_8859_1);
        int at = file.length() - behind;
        assertEquals(new String(clip, StandardCharsets.ISO_8859_1), file.substring(at, at + clip.length));
        assertTrue(file.startsWith("mpvd", at - padding + 4), "the padding is the video box's header");
    }

    @Test
    void live_OwnPacketArrivesWithEveryCharacter() throws Exception {
        String packet = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Straße \uD83D\uDE00</x:xmpmeta>";
        Files.writeString(in("packet.xmp"), "\uFEFF" + packet);
        assertEquals(0, run(mPhoto, "--video", kClip, "--xmp", in("packet.xmp"), "-o", in("out.heic")), mErr::toString);
        byte[] written = program("exiftool", "-b", "-XMP", in("out.heic"));
        assertEquals(packet, new String(written, StandardCharsets.UTF_8).strip());
    }

    @Test
    void live_UnusableVideosAreNamed() throws IOException {
        assertFails(1, "there is no such file", mPhoto, "--video", in("none.mp4"));
        assertFails(1, "is no MP4 or MOV video", mPhoto, "--video", mPhoto);
        assertVideoFails("is empty", "(?s).*", "");
        assertVideoFails("no 'moov' box", "moov", "free");
        assertVideoFails("no 'mvhd' box", "mvhd", "free");
        assertVideoFails("no video track", "vide", "soun");
        assertVideoFails("codec (xyz1)", "avc1\0", "xyz1\0");
        assertVideoFails("how long", "\0\0\u0003\u00e8\0\0\u0005", "\0\0\0\0\0\0\u0005");
        assertVideoFails("cut short", "(?s).$", "");
        assertEquals(0, run(mPhoto, "--video", in("other.mp4"), "--force"), mErr::toString);
        assertTrue(mOut.toString().contains("unchecked"), mOut.toString());
    }

    @Test
    void clip_CutOrScribbledOverIsReadOrRefusedButNeverWorse() throws IOException {
        String clip = Files.readString(kClip, StandardCharsets.ISO_8859_1);
        for (int at = 0; at < clip.indexOf("mdat"); at += 3) {
            String damage = (at % 2 == 0 ? "\u00ff" : "\0").repeat(4);
            Path file = write("damaged.mp4", clip.substring(0, at) + damage + clip.substring(at + 4));
            try {
                assertTrue(Clip.read(file).mDurationUs > 0);
            } catch (IOException expected) {
                assertFalse(expected.getMessage().isEmpty());
            }
        }
        for (int length = 0; length < clip.indexOf("mdat"); length += 7) {
            Path file = write("damaged.mp4", clip.substring(0, length));
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
        String file = Files.readString(in("out.heic"), StandardCharsets.ISO_8859_1);
        Path cut = write("cut.heic", file.substring(0, file.length() - 1));
        assertThrows(IOException.class, () -> same.check(cut));
        String still = file.substring(0, file.indexOf("mpvd") - 4);
        for (int length = 0; length < still.length(); ++length) {
            write("cut.heic", still.substring(0, length));
            assertThrows(IOException.class, () -> HeifFileCheck.check(cut), "cut to " + length);
        }
        write("cut.heic", still.substring(still.indexOf("meta") - 4));
        assertThrows(IOException.class, () -> HeifFileCheck.check(cut));
        HeifFileCheck.check(write("still.heic", still));
    }
}
