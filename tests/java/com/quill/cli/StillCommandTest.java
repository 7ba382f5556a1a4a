package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.List;
import org.junit.jupiter.api.Test;

/** The command in this process: what it writes, says and leaves behind. */
class StillCommandTest extends CommandFixture {
    StillCommandTest() {
        super("still");
    }

    @Test
    void still_IsWrittenBesideThePhotographWithItsTime() throws IOException {
        Files.setLastModifiedTime(mPhoto, FileTime.fromMillis(1_000_000_000_000L));
        assertEquals(0, run(mPhoto, "--rotation", 180), mErr::toString);
        String file = Files.readString(in("photo.heic"), StandardCharsets.ISO_8859_1);
        assertTrue(file.contains("irot\2"), "quarter turns to the left");
        assertEquals(List.of("photo.heic", "photo.jpg"), files(mFolder));
        assertTrue(mOut.toString().startsWith(mPhoto + " -> " + in("photo.heic") + "  160x96  i420"), mOut::toString);
        assertEquals(Files.getLastModifiedTime(mPhoto), Files.getLastModifiedTime(in("photo.heic")));
        assertEquals("", mErr.toString());
    }

    @Test
    void still_FoldersAndListsAreTakenWhereTheyStandAndStillsThatAreThereSkipped() throws IOException {
        Files.createDirectories(in("in/below"));
        for (String name : new String[] {"in/a.JPG", "in/below/b.jpg"}) Files.copy(mPhoto, in(name));
        Files.writeString(in("in/notes.txt"), "no picture");
        Files.createSymbolicLink(in("link"), in("in"));
        assertEquals(0, run("-r", in("link"), "-d", in("out")), mErr::toString);
        assertTrue(Files.exists(in("out/a.heic")) && Files.exists(in("out/below/b.heic")));
        Files.writeString(in("list"), in("in/a.JPG") + "\n\n" + mPhoto + "\n");
        assertEquals(0, run("--files-from", in("list"), "-d", in("out"), "--skip-existing"), mErr::toString);
        assertTrue(Files.exists(in("out/photo.heic")));
        assertTrue(mOut.toString().endsWith("1 skipped: their stills are there\n"), mOut.toString());
    }

    @Test
    void still_ExistingOutputIsReplacedAndKeptOnFailure() throws IOException {
        Files.writeString(in("photo.heic"), "old");
        Files.writeString(in("text.jpg"), "no picture");
        assertEquals(1, run(in("text.jpg"), "-o", in("photo.heic")));
        assertEquals("old", Files.readString(in("photo.heic")));
        assertEquals(0, run(mPhoto, "-o", in("photo.heic")), mErr::toString);
        assertDoesNotThrow(() -> HeifFileCheck.check(in("photo.heic")));
        assertEquals(List.of("photo.heic", "photo.jpg", "text.jpg"), files(mFolder));
    }

    @Test
    void still_GoesOnAfterAFailureAndMakesTheFolder() throws IOException {
        assertEquals(1, run(in("missing.jpg"), mPhoto, "-d", in("new/folder")));
        String failure = in("missing.jpg") + ": there is no such file\n";
        assertEquals("quill: " + failure + "quill: 1 of 2 not written:\n  " + failure, mErr.toString());
        assertTrue(Files.exists(in("new/folder/photo.heic")));
    }

    @Test
    void still_UnusableOutputsAreNamedAndThePhotographIsNeverOverwritten() throws IOException {
        byte[] before = Files.readAllBytes(mPhoto);
        assertFails(1, "would overwrite the photograph", mPhoto, "-o", mPhoto);
        Files.createSymbolicLink(in("link.heic"), mPhoto);
        assertFails(1, "would overwrite the photograph", mPhoto, "-o", in("link.heic"));
        assertArrayEquals(before, Files.readAllBytes(mPhoto));
        Files.writeString(in("text.jpg"), "no picture");
        assertFails(1, "text.jpg", mPhoto, "-d", in("text.jpg/below"));
        assertFails(1, "there is no folder", mPhoto, "-o", in("nowhere/out.heic"));
        assertFails(1, "is a directory", mPhoto, "-o", mFolder);
        assertFails(1, "photo.jpg", mPhoto, "-d", "/proc/self");
    }

    @Test
    void still_WrongUsageWritesNothing() throws IOException {
        Files.createFile(in("photo.png"));
        assertFails(2, "quality 101", mPhoto, "-q", 101);
        assertFails(2, "rotation 45", mPhoto, "--rotation", 45);
        assertFails(2, "-o names one file", mPhoto, in("photo.png"), "-o", in("out.heic"));
        assertFails(2, "exclude each other", mPhoto, "-o", in("out.heic"), "-d", mFolder);
        assertFails(2, "would both become", mPhoto, in("photo.png"));
        assertFails(2, "no PHOTO is given");
        assertFails(2, "there is no photograph", "-r", Files.createDirectory(in("empty")));
        assertFails(2, "is named twice", mPhoto, mPhoto);
        assertFails(2, "needs a file", mPhoto, "-o", "-");
    }
}
