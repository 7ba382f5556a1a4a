package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Set;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.ValueSource;

/** The command in this process: what it writes, says and leaves behind. */
class StillCommandTest extends CommandFixture {
    private Path mPhoto;

    @BeforeEach
    void setUp() throws IOException {
        mPhoto = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 160, 96);
    }

    StillCommandTest() {
        super("still");
    }

    private void assertFiles(String... names) throws IOException {
        try (Stream<Path> files = Files.list(mFolder)) {
            assertEquals(Set.of(names), files.map(file -> file.getFileName().toString()).collect(Collectors.toSet()));
        }
    }

    @ParameterizedTest
    @ValueSource(strings = {"i420", "p010", "rgba", "nv12", "nv21"})
    void still_EveryFormatIsWrittenBesideThePhotograph(String format) throws IOException {
        assertEquals(0, run(mPhoto, "--format", format), mErr::toString);
        assertDoesNotThrow(() -> HeifFileCheck.check(in("photo.heic")));
        assertFiles("photo.jpg", "photo.heic");
        String line = mPhoto + " -> " + in("photo.heic") + "  160x96  " + format;
        assertTrue(mOut.toString().startsWith(line), mOut.toString());
        assertEquals(Files.getLastModifiedTime(mPhoto), Files.getLastModifiedTime(in("photo.heic")));
        assertEquals(format.equals("p010"), mErr.toString().contains("its samples have 8 bits"), mErr::toString);
    }

    @Test
    void still_OddSizeIsKeptAndCarriedAsRgba() throws IOException {
        ImageIO.write(Pictures.picture(131, 67), "png", in("odd.png").toFile());
        assertEquals(0, run(in("odd.png")), mErr::toString);
        assertTrue(mOut.toString().contains("131x67  rgba"), mOut.toString());
        assertFails(1, "takes an even width and height", in("odd.png"), "--format", "i420");
    }

    @ParameterizedTest
    @CsvSource({"6, auto, 3", "8, auto, 1", "3, auto, 2", "6, 180, 2"})  // 'irot' counts quarter turns to the left
    void still_OrientationMovesFromTheExifBlockIntoTheContainer(int orientation, String rotation, int irot)
            throws IOException {
        byte[] exif = Pictures.exif(ByteOrder.BIG_ENDIAN, orientation);
        Files.write(mPhoto, Pictures.jpegWithExif(160, 96, exif));
        assertEquals(0, run(mPhoto, "--rotation", rotation), mErr::toString);
        byte[] file = Files.readAllBytes(in("photo.heic"));
        assertEquals(irot, file[Pictures.find(file, "irot") + 4]);
        int block = Pictures.find(file, "Exif\0\0MM");
        assertTrue(block > 0, "no EXIF block in the file");
        assertEquals(1, file[block + Pictures.orientationAt() + 1]);
    }

    @Test
    void still_ExistingOutputIsReplacedAndKeptOnFailure() throws IOException {
        Files.writeString(in("photo.heic"), "old");
        Files.writeString(in("text.jpg"), "no picture");
        assertEquals(1, run(in("text.jpg"), "-o", in("photo.heic")));
        assertEquals("old", Files.readString(in("photo.heic")));
        assertEquals(0, run(mPhoto, "-o", in("photo.heic")), mErr::toString);
        assertDoesNotThrow(() -> HeifFileCheck.check(in("photo.heic")));
        assertFiles("photo.jpg", "photo.heic", "text.jpg");
    }

    @Test
    void still_GoesOnAfterAFailureAndMakesTheFolder() throws IOException {
        assertEquals(1, run(in("missing.jpg"), mPhoto, "-d", in("new/folder")));
        String failure = in("missing.jpg") + ": there is no such file\n";
        assertEquals("quill: " + failure + "quill: 1 of 2 not written:\n  " + failure, mErr.toString());
        assertTrue(Files.exists(in("new/folder/photo.heic")));
    }

    @Test
    void still_PhotographIsNeverOverwritten() throws IOException {
        byte[] before = Files.readAllBytes(mPhoto);
        assertFails(1, "would overwrite the photograph", mPhoto, "-o", mPhoto);
        Files.createSymbolicLink(in("link.heic"), mPhoto);
        assertFails(1, "would overwrite the photograph", mPhoto, "-o", in("link.heic"));
        assertArrayEquals(before, Files.readAllBytes(mPhoto));
    }

    @Test
    void still_UnusableInputsAndOutputsAreNamed() throws IOException {
        Files.writeString(in("text.jpg"), "no picture");
        assertFails(1, "text.jpg: is not a picture", in("text.jpg"));
        assertFails(1, "is a directory", mFolder);
        assertFails(1, "text.jpg", mPhoto, "-d", in("text.jpg/below"));
        assertFails(1, "there is no folder", mPhoto, "-o", in("nowhere/out.heic"));
        assertFails(1, "is a directory", mPhoto, "-o", mFolder);
        assertFails(1, "photo.jpg", mPhoto, "-d", "/proc/self");
        Files.write(mPhoto, Arrays.copyOf(Files.readAllBytes(mPhoto), 900));
        assertFails(1, "photo.jpg: is cut short", mPhoto);
        assertFiles("photo.jpg", "text.jpg");
    }

    @Test
    void still_WrongUsageWritesNothing() throws IOException {
        ImageIO.write(Pictures.picture(64, 64), "png", in("photo.png").toFile());
        assertFails(2, "quality 101", mPhoto, "-q", 101);
        assertFails(2, "rotation 45", mPhoto, "--rotation", 45);
        assertFails(2, "yuy2", mPhoto, "--format", "yuy2");
        assertFails(2, "-o names one file", mPhoto, in("photo.png"), "-o", in("out.heic"));
        assertFails(2, "exclude each other", mPhoto, "-o", in("out.heic"), "-d", mFolder);
        assertFails(2, "would both become", mPhoto, in("photo.png"));
        assertFails(2, "no PHOTO is given");
        assertFails(2, "is named twice", mPhoto, mPhoto);
        assertFails(2, "needs a file", mPhoto, "-o", "-");
        assertFiles("photo.jpg", "photo.png");
    }
}
