package com.quill.inspect;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.PrintWriter;
import java.io.RandomAccessFile;
import java.io.StringWriter;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Random;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Reading of files made by hand, whole and broken. */
class HeifReportTest {
    @TempDir
    Path mFolder;

    private HeifReport read(byte[] file) throws IOException {
        return HeifReport.read(Files.write(mFolder.resolve("file"), file));
    }

    private static byte[] replaced(byte[] file, String from, String to) {
        String text = new String(file, StandardCharsets.ISO_8859_1);
        assertTrue(text.contains(from));
        return text.replace(from, to).getBytes(StandardCharsets.ISO_8859_1);
    }

    /** Both forms of output. */
    private static String render(HeifReport report) throws IOException {
        StringWriter out = new StringWriter();
        TextReport.write(report, new PrintWriter(out));
        JsonReport.write(report, out);
        return out.toString();
    }

    private void assertProblem(String why, byte[] file) throws IOException {
        HeifReport report = read(file);
        assertTrue(report.problems().toString().contains(why), report.problems().toString());
        render(report);
    }

    private ExifData exif(byte[] jpeg) throws IOException {
        return read(HeifBytes.still(HeifBytes.exif(jpeg), 2)).mExif.get(0);
    }

    @Test
    void read_LivePhotoSectionsCloseTheFileInOrder() throws IOException {
        byte[] video = HeifBytes.still();  // ends in one of five bytes
        HeifReport live = read(HeifBytes.join(video, HeifBytes.box("gain", new byte[3]), HeifBytes.box("qext")));
        assertEquals(List.of(), live.problems());
        assertEquals(List.of(5L, 3L, 0L), live.mLivePhoto.stream().map(LivePhotoSection::size).toList());
        assertEquals(video.length + 8, live.mLivePhoto.get(1).offset());
        for (String stray : List.of("free", "mpvd")) {
            HeifReport odd = read(HeifBytes.join(video, HeifBytes.box("gain"), HeifBytes.box(stray)));
            assertEquals(1, odd.problems().size(), stray);
        }
    }

    @Test
    void read_WholeFile() throws IOException {
        HeifReport report = read(HeifBytes.still());
        assertEquals(List.of(), report.problems());
        assertEquals(List.of("ftyp", "meta", "mdat", "mpvd"), report.mBoxes.stream().map(Box::type).toList());
        assertEquals(report.mSize - 13, report.mBoxes.get(3).offset());
        Grid grid = report.mGrids.get(0);
        assertEquals(new Grid(1, 1, 2, 1000, 500, 512, 512, List.of(2L, 3L)), grid);
        Item primary = report.primary();
        assertEquals(1, primary.mId);
        assertEquals(90L, primary.property("irot").values().get("clockwiseDegrees"));
        assertEquals("4 bytes", primary.property("zzzz").text());
        assertTrue(primary.mProperties.get(1).essential());
        assertArrayEquals(HeifBytes.exif(HeifBytes.jpeg()), report.mExif.get(0).sample());
        assertEquals(HeifBytes.kXmp, report.mXmp.get(0).text());
        Thumbnail thumbnail = report.mExif.get(0).thumbnail();
        assertEquals("160x120 at " + (6 + HeifBytes.kJpeg),
                thumbnail.width() + "x" + thumbnail.height() + " at " + thumbnail.offset());
        assertArrayEquals(HeifBytes.jpeg(), thumbnail.data());
        String text = render(report);
        assertTrue(text.contains("tiles 2-3: hvc1 512x512 hidden, 30 bytes in the file"), text);
        assertTrue(text.contains("0x0112 Orientation                  SHORT     6\n"), text);
    }

    @Test
    void read_FileCutAtAnyLengthIsReportedAndNeverThrowsMore() throws IOException {
        byte[] whole = HeifBytes.still();
        int firstBoxEnd = 24;
        for (int length = 0; length < whole.length; ++length) {
            byte[] cut = Arrays.copyOf(whole, length);
            if (length < 16) {
                assertThrows(FormatException.class, () -> read(cut), "cut to " + length);
                continue;
            }
            HeifReport report = read(cut);
            boolean betweenBoxes = length == whole.length - 13;
            assertEquals(betweenBoxes, report.problems().isEmpty(), "cut to " + length);
            assertEquals(length >= firstBoxEnd + 8, report.mBoxes.size() > 1);
            render(report);
        }
    }

    @Test
    void read_GarbageNeverThrowsMoreThanAnIoException() throws IOException {
        Random random = new Random(11);
        byte[] whole = HeifBytes.still();
        for (int round = 0; round < 5_000; ++round) {
            byte[] file = whole.clone();
            for (int i = random.nextInt(4); i >= 0; --i) {
                file[random.nextInt(file.length)] = (byte) (random.nextBoolean() ? 0xff : random.nextInt());
            }
            try {
                render(read(file));
            } catch (FormatException e) {
                assertFalse(e.getMessage().isEmpty());
            }
        }
    }

    @Test
    void read_WhatContradictsItselfIsNamed() throws IOException {
        assertProblem("2 tiles for 1 x 3", HeifBytes.still(HeifBytes.exif(HeifBytes.jpeg()), 3));
        assertProblem("item 9, which is not listed",
                replaced(HeifBytes.still(), "pitm\0\0\0\0\0\1", "pitm\0\0\0\0\0\11"));
        assertProblem("there is no box 'iloc'", replaced(HeifBytes.still(), "iloc", "free"));
        assertProblem("no TIFF header", replaced(HeifBytes.still(), "Exif\0\0MM", "Exif\0\0XX"));
        byte[] trailing = HeifBytes.join(HeifBytes.still(), "tail");
        assertProblem("the 4 bytes at " + (trailing.length - 4) + ", in the file, are no box", trailing);
    }

    @ParameterizedTest
    @CsvSource({"'', is empty", "\u00ff\u00d8\u00ff\u00e0 a photograph, is not a HEIF file",
        "'\0\0\0\24ftypisom\0\0\0\0isom', is not a HEIF file: its brand is 'isom'"})
    void read_OtherFilesAreRefused(String content, String why) {
        byte[] file = content.getBytes(StandardCharsets.ISO_8859_1);
        assertEquals(why, assertThrows(FormatException.class, () -> read(file)).getMessage());
    }

    @Test
    void read_ClaimsOfGigabytesAreNotFollowed() throws IOException {
        byte[] still = HeifBytes.still();
        int size = HeifBytes.join(HeifBytes.exif(HeifBytes.jpeg())).length + 4;
        byte[] claim = replaced(still, "\0\0\0" + (char) size, "\177\0\0\0");
        Path path = Files.write(mFolder.resolve("large"), claim);
        try (RandomAccessFile file = new RandomAccessFile(path.toFile(), "rw")) {
            file.setLength(1L << 32);  // sparse
        }
        HeifReport report = HeifReport.read(path);
        assertTrue(report.problems().toString().contains("(Exif) is too large"), report.problems().toString());
    }

    @Test
    void thumbnail_CutAnywhereSaysWhyItCannotBeRead() throws IOException {
        int sizeEnd = HeifBytes.jpeg().length - 4;
        for (int length = 0; length < sizeEnd; ++length) {
            Thumbnail thumbnail = exif(Arrays.copyOf(HeifBytes.jpeg(), length)).thumbnail();
            assertEquals(length < 2 ? "is no JPEG data" : "ends too early", thumbnail.problem());
        }
        byte[] exif = HeifBytes.exif(HeifBytes.jpeg());
        byte[] cut = Arrays.copyOf(exif, exif.length - 1);
        Thumbnail thumbnail = read(HeifBytes.still(cut, 2)).mExif.get(0).thumbnail();
        assertEquals("lies outside the EXIF block of " + cut.length + " bytes", thumbnail.problem());
        assertNull(thumbnail.data());
    }

    @Test
    void exif_DirectoryThatLeadsInACircleIsReadOnce() throws IOException {
        byte[] exif = HeifBytes.exif(HeifBytes.jpeg());
        exif[6 + HeifBytes.kIfd1 - 1] = 8;  // IFD1 is IFD0
        ExifData data = read(HeifBytes.still(exif, 2)).mExif.get(0);
        assertEquals(List.of("IFD0", "IFD1"), data.directories().stream().map(ExifDirectory::name).toList());
        assertNull(data.thumbnail());
    }

    @Test
    void exif_ValuesAndEntriesOutsideTheBlockAreNoted() throws IOException {
        byte[] exif = HeifBytes.exif(HeifBytes.jpeg());
        exif[6 + 8 + 2 + 7] = 99;  // 99 orientations
        exif[6 + HeifBytes.kIfd1] = 1;  // 258 entries
        List<String> notes = read(HeifBytes.still(exif, 2)).mExif.get(0).notes();
        assertEquals("IFD0: the value of tag 0x112 lies outside the block", notes.get(0));
        assertTrue(notes.get(1).matches("IFD1: only \\d of 258 entries are read"), notes.get(1));
    }

    @Test
    void text_NamesCannotSteerTheTerminal() throws IOException {
        byte[] file = replaced(HeifBytes.still(), "application/rdf+xml", "text/\33[2J;\u00c2\u009b;vwxyz0");
        String text = render(read(file));
        assertFalse(text.contains("\33"), text);
        assertTrue(text.contains("text/\\u001b[2J;\\u009b;"), text);
    }
}
