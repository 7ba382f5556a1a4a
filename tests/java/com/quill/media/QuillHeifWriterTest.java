package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** What the Java class refuses, and what a refused call leaves possible. */
class QuillHeifWriterTest {
    @TempDir
    Path mFolder;

    private final FrameLayout mLayout = Frames.layout(ColorFormat.RGBA8888);
    private final byte[] mFrame = Frames.frame(mLayout);
    private QuillHeifWriter mWriter;
    private RandomAccessFile mFile;
    private FileDescriptor mFd;

    @BeforeEach
    void setUp() throws IOException {
        mWriter = new QuillHeifWriter(mLayout, 90, 0);
        mFile = new RandomAccessFile(mFolder.resolve("still.heic").toFile(), "rw");
        mFd = mFile.getFD();
    }

    @AfterEach
    void tearDown() throws IOException {
        mWriter.close();
        mFile.close();
    }

    private static void assertIllegal(String part, Executable call) {
        String message = assertThrows(IllegalArgumentException.class, call).getMessage();
        assertTrue(message.contains(part), message);
    }

    private static void assertNull(String name, Executable call) {
        assertEquals(name, assertThrows(NullPointerException.class, call).getMessage());
    }

    @Test
    void constructor_RefusesQualityAndRotationOutOfRange() {
        assertIllegal("Quality 101", () -> new QuillHeifWriter(mLayout, 101, 0));
        assertIllegal("Quality -1", () -> new QuillHeifWriter(mLayout, -1, 0));
        assertIllegal("Rotation 45", () -> new QuillHeifWriter(mLayout, 90, 45));
        assertNull("layout", () -> new QuillHeifWriter(null, 90, 0));
    }

    @Test
    void writePhoto_RefusedArgumentsDoNotUseTheWriterUp() throws IOException {
        assertNull("frame", () -> mWriter.writePhoto(null, null, mFd));
        assertNull("fd", () -> mWriter.writePhoto(mFrame, null, null));
        assertIllegal("fd", () -> mWriter.writePhoto(mFrame, null, new FileDescriptor()));
        assertIllegal("7 bytes", () -> mWriter.writePhoto(new byte[7], null, mFd));
        mWriter.writePhoto(mFrame, null, mFd);
        assertTrue(mFile.length() > 0);
    }

    @Test
    void writePhoto_SecondFrameIsRefused() throws IOException {
        mWriter.writePhoto(mFrame, null, mFd);
        long length = mFile.length();
        assertThrows(IllegalStateException.class, () -> mWriter.writePhoto(mFrame, null, mFd));
        assertEquals(length, mFile.length());
    }

    @Test
    void close_TwiceIsHarmlessAndUseAfterwardsIsRefused() {
        mWriter.close();
        mWriter.close();
        assertThrows(IllegalStateException.class, () -> mWriter.writePhoto(mFrame, null, mFd));
    }

    @Test
    void writePhoto_FailureOfTheLibraryIsAnIoException() throws IOException {
        Path path = mFolder.resolve("still.heic");
        try (RandomAccessFile readOnly = new RandomAccessFile(path.toFile(), "r")) {
            assertThrows(IOException.class, () -> mWriter.writePhoto(mFrame, null, readOnly.getFD()));
        }
        assertEquals(0, Files.size(path));
    }

    @Test
    void writeLivePhoto_RefusesMissingVideoAndForeignBitmap() {
        QuillHeifWriter.Options options = new QuillHeifWriter.Options();
        assertNull("options.videoFd", () -> mWriter.writeLivePhoto(mFrame, null, mFd, options));
        assertNull("xmp", () -> options.setXmpData(null));
        options.setVideoFd(mFd).setGainmapFd(new FileDescriptor());
        assertIllegal("gainmapFd", () -> mWriter.writeLivePhoto(mFrame, null, mFd, options));
        Bitmap narrow = Bitmap.createBitmap(Frames.kWidth - 1, Frames.kHeight, Bitmap.Config.ARGB_8888);
        assertIllegal("95x80", () -> mWriter.writeLivePhoto(narrow, null, mFd, options));
    }
}
