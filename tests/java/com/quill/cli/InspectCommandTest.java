package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.fasterxml.jackson.core.JsonFactory;
import com.fasterxml.jackson.core.JsonParser;
import com.quill.inspect.ExifBlock;
import com.quill.inspect.HeifReport;
import com.quill.inspect.JsonReport;
import com.quill.inspect.TextReport;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.io.PrintWriter;
import java.io.RandomAccessFile;
import java.io.StringWriter;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.Set;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The command over a small live photo that the library wrote, as it is and with bytes of it changed. */
class InspectCommandTest extends CommandFixture {
    // A baseline frame header of 160x120 and nothing more.
    private static final byte[] kThumbnail =
            bytes("\u00ff\u00d8\u00ff\u00db\0\4\0\0\u00ff\u00c0\0\13\b\0\170\0\240\1\1\21\0");
    private static final byte[] kExif = Pictures.exif(ByteOrder.BIG_ENDIAN, 6, kThumbnail);
    private static final byte[] kVideo = bytes("\0\0\0\0\0\0\0\25video");  // with a size that a box could have
    private static final byte[] kXmp = "<x:xmpmeta>\u00e4</x:xmpmeta>".getBytes(StandardCharsets.UTF_8);
    private static String sWhole;

    private Path mFile;

    InspectCommandTest() {
        super("inspect");
    }

    @BeforeEach
    void writeLivePhoto() throws IOException {
        mFile = in("live.heic");
        if (sWhole != null) return;
        Pictures.writeJpeg(mPhoto, new BufferedImage(700, 520, BufferedImage.TYPE_3BYTE_BGR), kExif);
        Path video = Files.write(in("video"), kVideo);
        Path xmp = Files.write(in("xmp"), kXmp);
        assertEquals(0, Quill.commandLine().execute("live", mPhoto.toString(), "--video", video.toString(), "--force",
                "--xmp", xmp.toString(), "--extender", xmp.toString(), "-o", mFile.toString()));
        sWhole = Files.readString(mFile, StandardCharsets.ISO_8859_1);
    }

    private static byte[] bytes(String text) {
        return text.getBytes(StandardCharsets.ISO_8859_1);
    }

    private static String replaced(String from, String to) {
        assertTrue(sWhole.contains(from), from);
        return sWhole.replace(from, to);
    }

    /** What is wrong with a file of these bytes, once both forms of output were made, the JSON one well formed. */
    private List<String> problems(String file) throws IOException {
        HeifReport report = HeifReport.read(Files.write(mFile, bytes(file)));
        StringWriter json = new StringWriter();
        JsonReport.write(report, json);
        try (JsonParser parser = new JsonFactory().createParser(json.toString())) {
            while (parser.nextToken() != null) continue;
        }
        mOut = new StringWriter();
        TextReport.write(report, new PrintWriter(mOut));
        assertFalse(mOut.toString().contains("\33"), mOut.toString());
        return report.problems();
    }

    @ParameterizedTest
    @ValueSource(strings = {"tiles 1-4: hvc1 512x512 hidden, ", "irot  90 degrees clockwise  (essential)",
        "rows: 2, columns: 2, tiles: 512x512, picture: 700x520", "0x0112 Orientation                  SHORT     1\n",
        "thumbnail at 74 of the block, 21 bytes, JPEG 160x120\n", "\"size\" : 1358,", "\"primaryItem\" : 5",
        "\"type\" : \"mpvd\",\n    \"offset\" : 1304,", "\"clockwiseDegrees\" : 90", "\"hidden\" : true",
        "\"essential\" : true", "\"tiles\" : [ 1, 2, 3, 4 ]", "\"byteOrder\" : \"MM\"", "\"name\" : \"Orientation\"",
        "\"text\" : \"<x:xmpmeta>\\u00E4</x:xmpmeta>\"", "\"type\" : \"qext\",\n    \"offset\" : 1333,"})
    void inspect_TextAndJsonTellOfTheGridAndTheMetadata(String part) throws IOException {
        Files.write(mFile, bytes(sWhole));
        assertEquals(0, run(mFile), () -> mErr.toString());
        String text = mOut.toString();
        assertEquals(0, run(mFile, "--json"), () -> mErr.toString());
        assertTrue((text + mOut).contains(part), text + mOut);
    }

    @ParameterizedTest
    @CsvSource(delimiter = '|', quoteCharacter = '`', ignoreLeadingAndTrailingWhitespace = false, value = {
        "mif1heicmiaf|isomisomisom|0|brand heic",
        "ftypheic|ftypisom|0|brand isom",
        "ftypheic\0\0\0\0mif1heicmiaf|ftypisom\0\0\0\0isomisomisom|1|is not a HEIF file: its brand is 'isom'",
        "ftyp|styp|1|is not a HEIF file",
        "pitm\0\0\0\0\0\5|pitm\0\0\0\0\0\11|1|item 9, which is not listed",
        "iloc|free|1|there is no box 'iloc'",
        "\0\0\1\1\2\u00bc|\0\0\1\2\2\u00bc|1|4 tiles for 2 x 3",
        "pixi|zzzz|0|zzzz  8 bytes",
        "\0\0\0\41qext|\0\0\0\35qext|1|the 4 bytes at 1354, in the file, are no box",
        // The sections close the file in order; a box may have its size behind its type.
        "\0\0\0\25mpvd|\0\0\0\1mpvd|0|1320            5",
        "mpvd|free|1|the live photo's extender at 1325 is out of place",
        "qext|mpvd|1|the live photo's video at 1325 is out of place",
        "qext|free|1|the box 'free' at 1325 stands behind the live photo's video",
        "application/rdf+xml|text/\33[2J;\u00c2\u009b;vwxyz0|0|text/\\u001b[2J;\\u009b;",
        // EXIF: no header, a circle of directories, 99 orientations, 258 entries; a thumbnail too long, and cut.
        "Exif\0\0MM|Exif\0\0XX|1|no TIFF header",
        "\0\46\0\2\2\1|\0\10\0\2\2\1|0|IFD1 at 8, 2 entries",
        "\1\22\0\3\0\0\0\1|\1\22\0\3\0\0\0\143|0|IFD0: the value of tag 0x112 lies outside the block",
        "\0\46\0\2\2\1|\0\46\1\2\2\1|0|IFD1: only 4 of 258 entries are read",
        "\1\0\0\0\25|\1\0\0\0\26|0|lies outside the EXIF block of 95 bytes",
        "\1\0\0\0\25|\1\0\0\0\20|0|ends too early",
        "\1\0\0\0\25|\1\0\0\0\2|0|ends too early",
        "\1\0\0\0\25|\1\0\0\0\1|0|is no JPEG data"})
    void inspect_WhatContradictsItselfIsNamed(String from, String to, int status, String told) throws IOException {
        Files.write(mFile, bytes(replaced(from, to)));
        assertEquals(status, run(mFile));
        String said = mOut.toString() + mErr;
        assertTrue(said.contains(told) && !said.contains("\33"), said);
    }

    @Test
    void read_FileCutAtAnyLengthIsReportedAsFarAsItGoes() throws IOException {
        Set<Integer> ends = Set.of(sWhole.indexOf("mpvd") - 4, sWhole.indexOf("qext") - 4);
        for (int length = 0; length < sWhole.length(); ++length) {
            String cut = sWhole.substring(0, length);
            if (length < 16) {
                assertThrows(IOException.class, () -> problems(cut), cut);
                continue;
            }
            assertEquals(ends.contains(length), problems(cut).isEmpty(), "cut to " + length);
            assertEquals(length >= sWhole.indexOf("mdat") - 4, mOut.toString().contains("rows: 2, columns: 2"), cut);
        }
    }

    @Test
    void read_GarbageNeverThrowsMoreThanAnIoException() throws IOException {
        Random random = new Random(11);
        int pictures = sWhole.indexOf("mdat") + 4;
        int picturesEnd = sWhole.indexOf("Exif\0\0MM");
        for (int round = 0; round < 5_000; ++round) {
            StringBuilder file = new StringBuilder(sWhole);
            for (int i = random.nextInt(4); i >= 0; --i) {
                int at = random.nextInt(sWhole.length() - (picturesEnd - pictures));
                file.setCharAt(at < pictures ? at : at - pictures + picturesEnd,
                        (char) (random.nextBoolean() ? 0xff : random.nextInt(256)));
            }
            try {
                problems(file.toString());
            } catch (IOException e) {
                assertFalse(e.getMessage().isEmpty());
            }
        }
    }

    @Test
    void inspect_ClaimsOfGigabytesAreNotFollowed() throws IOException {
        Files.write(mFile, bytes(replaced("\0\0\0\143\0\7", "\177\0\0\0\0\7")));  // the size of the EXIF item
        try (RandomAccessFile file = new RandomAccessFile(mFile.toFile(), "rw")) {
            file.setLength(1L << 32);  // sparse
        }
        assertEquals(1, run(mFile));
        assertTrue(mOut.toString().contains("(Exif) is too large"), mOut.toString());
    }

    @Test
    void extract_WritesThePartsAndNeverOverTheFile() throws Exception {
        Files.write(mFile, bytes(sWhole));
        Path folder = in("new/folder");
        Map<String, byte[]> parts = Map.of("exif.bin", Pictures.exif(ByteOrder.BIG_ENDIAN, 1, kThumbnail),
                "thumbnail.jpg", program("exiftool", "-b", "-ThumbnailImage", mFile), "xmp.xml", kXmp, "video.mp4",
                kVideo, "extender.bin", kXmp);
        for (int round = 0; round < 2; ++round) {  // the second one replaces the first one's
            assertEquals(0, run(mFile, "--extract", folder), () -> mErr.toString());
        }
        assertEquals(Set.copyOf(files(folder)), parts.keySet());
        for (String name : parts.keySet()) {
            assertArrayEquals(parts.get(name), Files.readAllBytes(folder.resolve(name)), name);
            assertTrue(mOut.toString().contains("wrote " + folder.resolve(name)), mOut.toString());
        }
        assertEquals(0, run(mFile, "--json", "--extract", folder));
        assertTrue(mErr.toString().contains("wrote ") && mOut.toString().startsWith("{"), mOut.toString());
        Path same = Files.move(mFile, in("exif.bin"));
        assertEquals(1, run(same, "--extract", mFolder));
        assertTrue(mErr.toString().contains("would overwrite"), mErr.toString());
        assertArrayEquals(bytes(sWhole), Files.readAllBytes(same));
    }

    @Test
    void inspect_UnusableInputsAreRefused() throws IOException {
        assertFails(1, "is empty", Files.createFile(in("empty")));
        assertFails(1, "is a directory", mFolder);
    }

    @ParameterizedTest
    @ValueSource(booleans = {true, false})
    void exifBlock_OrientationIsReadAndChangedWithinItsBounds(boolean big) {
        ByteOrder order = big ? ByteOrder.BIG_ENDIAN : ByteOrder.LITTLE_ENDIAN;
        byte[] block = Pictures.exif(order, 8);
        for (int length = 0; length < block.length; ++length) {
            byte[] cut = Arrays.copyOf(block, length);
            boolean whole = length >= block.length - 4;  // of the next directory
            assertEquals(whole ? 8 : 1, new ExifBlock(cut).orientation(), "cut to " + length);
            new ExifBlock(cut).setUpright();
            assertEquals(1, new ExifBlock(cut).orientation());
        }
        new ExifBlock(block).setUpright();
        assertArrayEquals(Pictures.exif(order, 1), block);
        assertEquals(1, new ExifBlock(Pictures.exif(order, 9)).orientation());
    }
}
