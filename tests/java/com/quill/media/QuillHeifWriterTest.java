package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

/** What the Java class refuses, and what a refused call leaves possible. */
class QuillHeifWriterTest {
    @TempDir
    Path mFolder;

    private final FrameLayout mLayout = Frames.layout(ColorFormat.RGBA8888);
    private final byte[] mFrame = Frames.frame(mLayout);
    private QuillHeifWriter mWriter;
    private RandomAccessFile mFile;
    private RandomAccessFile mVideo;
    private FileDescriptor mFd;

    @BeforeEach
    void setUp() throws IOException {
        mWriter = new QuillHeifWriter(mLayout, 90, 0);
        mFile = new RandomAccessFile(mFolder.resolve("still.heic").toFile(), "rw");
        mFd = mFile.getFD();
        mVideo = new RandomAccessFile(mFolder.resolve("clip").toFile(), "rw");
    }

    @AfterEach
    void tearDown() throws IOException {
        mWriter.close();
        mFile.close();
        mVideo.close();
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

    /** The three ways to write, each with what it takes for a frame. */
    private enum Call {
        PHOTO, LIVE_PHOTO, LIVE_BITMAP;

        void run(QuillHeifWriter writer, boolean withFrame, FileDescriptor fd, QuillHeifWriter.Options options)
                throws IOException {
            FrameLayout layout = Frames.layout(ColorFormat.RGBA8888);
            byte[] frame = withFrame ? Frames.frame(layout) : null;
            Bitmap bitmap = Bitmap.createBitmap(layout.width(), layout.height(), Bitmap.Config.ARGB_8888);
            if (this == PHOTO) writer.writePhoto(frame, null, fd);
            if (this == LIVE_PHOTO) writer.writeLivePhoto(frame, null, fd, options);
            if (this == LIVE_BITMAP) writer.writeLivePhoto(withFrame ? bitmap : null, null, fd, options);
        }
    }

    private QuillHeifWriter.Options options() throws IOException {
        return new QuillHeifWriter.Options().setVideoFd(mVideo.getFD());
    }

    @ParameterizedTest
    @EnumSource
    void write_RefusedArgumentsDoNotUseTheWriterUpButAFrameDoes(Call call) throws IOException {
        assertNull(call == Call.LIVE_BITMAP ? "bitmap" : "frame", () -> call.run(mWriter, false, mFd, options()));
        assertNull("fd", () -> call.run(mWriter, true, null, options()));
        assertIllegal("fd", () -> call.run(mWriter, true, new FileDescriptor(), options()));
        if (call != Call.PHOTO) assertNull("options", () -> call.run(mWriter, true, mFd, null));
        assertEquals(0, mFile.length());
        call.run(mWriter, true, mFd, options());
        long length = mFile.length();
        assertTrue(length > 0);
        for (Call second : Call.values()) {
            assertThrows(IllegalStateException.class, () -> second.run(mWriter, true, mFd, options()));
        }
        assertEquals(length, mFile.length());
    }

    @ParameterizedTest
    @EnumSource
    void close_TwiceIsHarmlessAndUseAfterwardsIsRefused(Call call) throws IOException {
        mWriter.close();
        mWriter.close();
        assertThrows(IllegalStateException.class, () -> call.run(mWriter, true, mFd, options()));
        assertEquals(0, mFile.length());
    }

    @Test
    void writePhoto_ArrayThatIsTooShortIsRefused() {
        assertIllegal("7 bytes", () -> mWriter.writePhoto(new byte[7], null, mFd));
    }

    @Test
    @Timeout(value = 8, unit = TimeUnit.SECONDS)  // below the library's own ten seconds
    void write_NoRoomAndNoSeekableFileAreIoExceptions() throws Exception {
        for (Call call : Call.values()) {
            try (RandomAccessFile full = new RandomAccessFile("/dev/full", "rw");
                    QuillHeifWriter writer = new QuillHeifWriter(Frames.layout(ColorFormat.RGBA8888), 90, 0)) {
                String message = assertThrows(IOException.class, () -> call.run(writer, true, full.getFD(), options()))
                        .getMessage();
                assertTrue(message.contains("no room"), message);
            }
        }
        Process reader = new ProcessBuilder("cat").redirectOutput(ProcessBuilder.Redirect.DISCARD).start();
        try (FileOutputStream pipe = new FileOutputStream("/proc/" + reader.pid() + "/fd/0");
                QuillHeifWriter writer = new QuillHeifWriter(mLayout, 90, 0)) {
            assertThrows(IOException.class, () -> writer.writePhoto(mFrame, null, pipe.getFD()));
            writer.writePhoto(mFrame, null, mFd);  // none of it was used up
        } finally {
            reader.destroy();
        }
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
