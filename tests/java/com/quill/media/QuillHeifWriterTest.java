package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import com.quill.media.HeifWriteException.Content;
import java.io.FileDescriptor;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.lang.reflect.Field;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.Map;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

/** What the class refuses, what a refused call leaves possible, and what it says about the file when a call fails. */
class QuillHeifWriterTest extends PhotoFixture {
    private static void assertIllegal(String part, Executable call) {
        String message = assertThrows(IllegalArgumentException.class, call).getMessage();
        assertTrue(message.contains(part), message);
    }

    private static void assertNull(String name, Executable call) {
        assertEquals(name, assertThrows(NullPointerException.class, call).getMessage());
    }

    private static void assertFails(Content content, String part, Executable call) {
        HeifWriteException e = assertThrows(HeifWriteException.class, call);
        assertTrue(e.getMessage().contains(part), e.getMessage());
        assertEquals(content, e.content());
    }

    @Test
    void arguments_RefusedOnesAreNamed() throws IOException {
        assertIllegal("Quality 101", () -> new QuillHeifWriter(kLayout, 101, 0));
        assertIllegal("Rotation 45", () -> new QuillHeifWriter(kLayout, 90, 45));
        assertNull("layout", () -> new QuillHeifWriter(null, 90, 0));
        assertIllegal("Width 0 is below 1", () -> new FrameLayout(0, 8, 8, 8, ColorFormat.NV12));
        assertIllegal("Height -1 is below 1", () -> new FrameLayout(8, -1, 8, 8, ColorFormat.NV12));
        assertIllegal("Stride 7 is below the width 8", () -> new FrameLayout(8, 8, 7, 8, ColorFormat.NV12));
        assertIllegal("Slice height 6 is below", () -> new FrameLayout(8, 8, 8, 6, ColorFormat.NV12));
        assertIllegal("536870911 fit", () -> new FrameLayout(8, 8, 32768, 16384, ColorFormat.NV12));
        assertNull("xmp", () -> mOptions.setXmpData(null));
        Bitmap recycled = bitmap();
        recycled.recycle();
        Bitmap narrow = Bitmap.createBitmap(95, 80, Bitmap.Config.ARGB_8888);
        try (QuillHeifWriter writer = writer()) {
            assertNull("frame", () -> writer.writePhoto(null, null, mFd));
            assertNull("fd", () -> writer.writePhoto(kFrame, null, null));
            assertNull("options", () -> writer.writeLivePhoto(kFrame, null, mFd, null));
            assertIllegal("7 bytes", () -> writer.writePhoto(new byte[7], null, mFd));
            assertIllegal("fd is not an open file", () -> writer.writePhoto(kFrame, null, new FileDescriptor()));
            assertIllegal("95x80", () -> writer.writeLivePhoto(narrow, null, mFd, mOptions));
            assertIllegal("recycled", () -> writer.writeLivePhoto(recycled, null, mFd, mOptions));
            assertNull("options.videoFd",
                    () -> writer.writeLivePhoto(kFrame, null, mFd, new QuillHeifWriter.Options()));
            writer.writePhoto(kFrame, null, mFd);  // nothing of it used the writer up
        }
    }

    /** A descriptor that Java's own classes do not give: of a folder. The stream keeps it open. */
    private FileDescriptor descriptorOf(DirectoryStream<Path> folder) throws Exception {
        FileDescriptor fd = new FileDescriptor();
        Field number = FileDescriptor.class.getDeclaredField("fd");
        number.setAccessible(true);
        for (Path open : Files.newDirectoryStream(Path.of("/proc/self/fd"))) {
            if (!Files.exists(open) || !Files.isSameFile(open, mFolder)) continue;
            number.setInt(fd, Integer.parseInt(open.getFileName().toString()));
        }
        return fd;
    }

    @Test
    void files_ThatDoNotServeAreRefusedAndLeftAlone() throws Exception {
        assertEquals(0, new ProcessBuilder("mkfifo", in("pipe").toString()).start().waitFor());
        QuillHeifWriter.Options withVideo = new QuillHeifWriter.Options().setVideoFd(mVideo.getFD());
        try (QuillHeifWriter writer = writer();
                DirectoryStream<Path> folder = Files.newDirectoryStream(mFolder);
                RandomAccessFile pipe = new RandomAccessFile(in("pipe").toFile(), "rw");
                RandomAccessFile huge = open("huge", new byte[0]);
                FileInputStream readOnly = new FileInputStream(in("photo.heic").toFile());
                FileOutputStream writeOnly = new FileOutputStream(in("photo.heic").toFile())) {
            huge.setLength(1L << 31);
            FileDescriptor directory = descriptorOf(folder);
            Map<FileDescriptor, String> sources = Map.of(directory, "is a directory", pipe.getFD(),
                    "is not a regular file", huge.getFD(), "is too large", writeOnly.getFD(), "is not open for reading",
                    readOnly.getFD(), "is the file that the photo goes to");
            sources.forEach((fd, why) -> {
                assertFails(Content.UNCHANGED, "options.videoFd " + why, () -> Call.LIVE_BITMAP.run(writer, mFd,
                        new QuillHeifWriter.Options().setVideoFd(fd)));
                assertFails(Content.UNCHANGED, "options.gainmapFd " + why, () -> Call.LIVE_PHOTO.run(writer, mFd,
                        withVideo.setGainmapFd(fd)));
            });
            Map<FileDescriptor, String> outputs = Map.of(directory, "is a directory", pipe.getFD(),
                    "is not a regular file", huge.getFD(), "is not an empty file", readOnly.getFD(),
                    "is not open for writing");
            outputs.forEach((fd, why) -> assertFails(Content.UNCHANGED, "fd " + why,
                    () -> Call.PHOTO.run(writer, fd, null)));
            assertFails(Content.UNCHANGED, "fd is not open for reading",
                    () -> Call.LIVE_PHOTO.run(writer, writeOnly.getFD(), mOptions));
            mOutput.seek(1);
            assertFails(Content.UNCHANGED, "fd does not stand", () -> Call.PHOTO.run(writer, mFd, null));
            assertEquals(0, written().length);
            Call.PHOTO.run(writer, writeOnly.getFD(), null);  // nothing of it used the writer up
        }
    }

    @ParameterizedTest
    @EnumSource
    void writer_TakesOneFrameAndNoneOnceClosed(Call call) throws IOException {
        QuillHeifWriter closed = writer();
        closed.close();
        closed.close();
        assertThrows(IllegalStateException.class, () -> call.run(closed, mFd, mOptions));
        try (QuillHeifWriter writer = writer()) {
            call.run(writer, mFd, mOptions);
            byte[] photo = written();
            for (Call second : Call.values()) {
                assertThrows(IllegalStateException.class, () -> second.run(writer, mFd, mOptions));
            }
            assertArrayEquals(photo, written());
        }
    }

    @Test
    void livePhoto_OfFrameAndBitmapAreTheSameAndHaveAllSectionsInOrder() throws IOException {
        byte[] gainmap = bytes(4096, 5);
        byte[] sections = ByteBuffer.allocate(3 * 8 + kVideo.length + gainmap.length)
                .putInt(8 + kVideo.length).put("mpvd".getBytes(StandardCharsets.US_ASCII)).put(kVideo)
                .putInt(8 + gainmap.length).put("gain".getBytes(StandardCharsets.US_ASCII)).put(gainmap)
                .putInt(8).put("qext".getBytes(StandardCharsets.US_ASCII)).array();
        try (RandomAccessFile file = open("gain.jpg", gainmap)) {
            mOptions.setGainmapFd(file.getFD()).setFileExtender(new byte[0]);
            mOptions.setXmpData("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Straße \uD83D\uDE00</x:xmpmeta>");
            mVideo.seek(17);
            byte[] photo = write(Call.LIVE_PHOTO);
            assertArrayEquals(sections, Arrays.copyOfRange(photo, photo.length - sections.length, photo.length));
            assertTrue(new String(photo, StandardCharsets.UTF_8).contains(">Straße \uD83D\uDE00</"));
            assertArrayEquals(photo, write(Call.LIVE_BITMAP));
        }
    }

    /** No file of this process grows beyond a length in bytes, as on a file system that is full then. */
    private static void limitFiles(String most) throws Exception {
        assertEquals(0, new ProcessBuilder("prlimit", "--pid=" + ProcessHandle.current().pid(), "--fsize=" + most + ":")
                .start().waitFor());
    }

    @ParameterizedTest
    @EnumSource
    void fullFileSystem_IsReportedWithWhatIsInTheFile(Call call) throws Exception {
        int still = write(Call.PHOTO).length;
        mOutput.setLength(0);
        mOutput.seek(0);
        try (FileOutputStream appending = new FileOutputStream(in("photo.heic").toFile(), true)) {
            limitFiles(Integer.toString(still / 2));
            assertFails(Content.UNCHANGED, "may be full", () -> Call.PHOTO.run(writer(), appending.getFD(), null));
            assertFails(call == Call.PHOTO ? Content.UNCHANGED : Content.DAMAGED, "may be full",
                    () -> call.run(writer(), mFd, mOptions));
            mOutput.setLength(0);
            limitFiles(Integer.toString(still + 5000));
            if (call == Call.PHOTO) return;
            assertFails(Content.STILL, "whole still and 5000 of 9009 bytes behind it", () -> write(call));
        } finally {
            limitFiles("unlimited");
        }
    }

    @ParameterizedTest
    @EnumSource
    void interrupt_BeforeDuringOrAfterACallChangesNothing(Call call) throws Exception {
        byte[] photo = write(call);
        Thread app = Thread.currentThread();
        app.interrupt();
        assertArrayEquals(photo, write(call), "before");
        assertTrue(Thread.interrupted());
        new Thread(() -> {
            while (Stream.of(app.getStackTrace()).noneMatch(c -> c.getMethodName().matches("native(Proc|CreateL).*"))) {
                Thread.onSpinWait();
            }
            app.interrupt();
        }).start();
        do {
            assertArrayEquals(photo, write(call), "during");
        } while (!Thread.interrupted());
        app.interrupt();
        assertTrue(mVideo.length() == kVideo.length && mOutput.length() == photo.length, "after");
        assertTrue(Thread.interrupted());
    }
}
