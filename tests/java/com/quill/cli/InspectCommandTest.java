package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.fasterxml.jackson.core.JsonFactory;
import com.fasterxml.jackson.core.JsonParser;
import java.io.IOException;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.HashMap;
import java.util.Map;
import java.util.Set;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;

/** The command over stills that the library wrote. */
class InspectCommandTest extends CommandFixture {
    private static final Path kPhoto =
            Path.of(System.getProperty("quill.photos")).resolve("compact-640x480-with-thumbnail.jpg");

    InspectCommandTest() {
        super("inspect");
    }

    private Path still(Path photo) {
        Path still = in("still.heic");
        assertEquals(0, Quill.commandLine().execute("still", photo.toString(), "-o", still.toString()));
        return still;
    }

    /** The scalars of a JSON document by their pointers. */
    private static Map<String, String> scalars(String text) throws IOException {
        Map<String, String> values = new HashMap<>();
        try (JsonParser json = new JsonFactory().createParser(text)) {
            while (json.nextToken() != null) {
                if (json.currentToken().isScalarValue()) {
                    values.put(json.getParsingContext().pathAsPointer().toString(), json.getText());
                }
            }
        }
        return values;
    }

    @Test
    void inspect_JsonAndTextTellOfTheGridAndTheExifBlock() throws IOException {
        Path photo = mFolder.resolve("photo.jpg");
        Files.write(photo, Pictures.jpegWithExif(700, 520, Pictures.exif(ByteOrder.BIG_ENDIAN, 6)));
        Path still = still(photo);
        assertEquals(0, run(still, "--json"), () -> mErr.toString());
        Map<String, String> json = scalars(mOut.toString());
        assertEquals("" + Files.size(still), json.get("/size"));
        assertEquals("5", json.get("/primaryItem"));
        assertEquals("700", json.get("/grids/0/width"));
        assertEquals("520", json.get("/grids/0/height"));
        assertEquals("4", json.get("/grids/0/tiles/3"));
        assertEquals("true", json.get("/items/3/hidden"));
        assertEquals("MM", json.get("/exif/0/byteOrder"));
        assertEquals("Orientation", json.get("/exif/0/directories/0/entries/1/name"));
        assertEquals("1", json.get("/exif/0/directories/0/entries/1/value"));
        assertEquals(0, run(still));
        assertTrue(mOut.toString().contains("tiles 1-4: hvc1 512x512 hidden"), mOut.toString());
        assertTrue(mOut.toString().contains("irot  90 degrees clockwise  (essential)"), mOut.toString());
        assertTrue(mOut.toString().contains("rows: 2, columns: 2, tiles: 512x512, picture: 700x520"), mOut.toString());
    }

    @Test
    void extract_WritesWhatOtherReadersFind() throws Exception {
        Path still = still(kPhoto);
        Path folder = mFolder.resolve("new/folder");
        for (int round = 0; round < 2; ++round) {  // the second one replaces the first one's
            assertEquals(0, run(still, "--extract", folder), () -> mErr.toString());
        }
        byte[] thumbnail = Programs.run("exiftool", "-b", "-ThumbnailImage", still.toString());
        assertArrayEquals(thumbnail, Files.readAllBytes(folder.resolve("thumbnail.jpg")));
        byte[] block = Files.readAllBytes(folder.resolve("exif.bin"));
        assertEquals(0, Pictures.find(block, "Exif\0\0II"));
        try (Stream<Path> files = Files.list(folder)) {
            assertEquals(Set.of("exif.bin", "thumbnail.jpg"),
                    files.map(file -> file.getFileName().toString()).collect(Collectors.toSet()));
        }
        assertTrue(mOut.toString().contains("wrote " + folder.resolve("thumbnail.jpg")), mOut.toString());
        assertEquals(0, run(still, "--json", "--extract", folder));
        assertEquals("10861", scalars(mOut.toString()).get("/exif/0/size"));
    }

    @Test
    void extract_NeverOverwritesTheInspectedFile() throws IOException {
        Path file = Files.move(still(kPhoto), mFolder.resolve("exif.bin"));
        byte[] before = Files.readAllBytes(file);
        assertEquals(1, run(file, "--extract", mFolder));
        assertArrayEquals(before, Files.readAllBytes(file));
        assertTrue(mErr.toString().contains("would overwrite"), mErr.toString());
    }

    @Test
    void inspect_CutFileIsShownAsFarAsItGoes() throws IOException {
        byte[] whole = Files.readAllBytes(still(kPhoto));
        Path cut = Files.write(mFolder.resolve("cut.heic"), Arrays.copyOf(whole, whole.length / 2));
        assertEquals(1, run(cut));
        assertTrue(mErr.toString().startsWith("quill: " + cut + ": the box 'mdat' at "), mErr.toString());
        assertTrue(mOut.toString().contains("rows: 1, columns: 2"), mOut.toString());
    }

    @Test
    void inspect_UnusableInputsAndWrongUsage() throws IOException {
        Path text = Files.writeString(mFolder.resolve("text.heic"), "no picture at all");
        assertEquals(1, run(text));
        assertEquals("quill: " + text + ": is not a HEIF file\n", mErr.toString());
        assertEquals(1, run(mFolder));
        assertEquals(1, run(mFolder.resolve("missing")));
        assertEquals(2, run());
        assertEquals(2, run(text, "--yaml"));
        assertEquals("", mOut.toString());
    }
}
