package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import com.quill.cli.CommandFixture;
import com.quill.media.HeifWriteException.Content;
import java.io.File;
import java.io.FileDescriptor;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.lang.reflect.Field;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

/** What the class and its native methods refuse, and what is in the file when a call fails. */
class QuillHeifWriterTest {
    static final FrameLayout kLayout = FrameLayout.evenlyPadded(96, 80, ColorFormat.RGBA8888);
    static final byte[] kFrame = bytes((int) kLayout.frameBytes(), 37);
    private static final byte[] kVideo = bytes(9001, 3);

    @TempDir
    Path mFolder;

    private final QuillHeifWriter.Options mOptions = new QuillHeifWriter.Options();
    private RandomAccessFile mVideo;
    private RandomAccessFile mOutput;
    private FileDescriptor mFd;

    enum Call {
        PHOTO, LIVE_PHOTO, LIVE_BITMAP;

        void run(QuillHeifWriter writer, FileDescriptor fd, QuillHeifWriter.Options options) throws IOException {
            if (this == PHOTO) writer.writePhoto(kFrame, null, fd);
            if (this == LIVE_PHOTO) writer.writeLivePhoto(kFrame, null, fd, options);
            if (this == LIVE_BITMAP) writer.writeLivePhoto(bitmap(), null, fd, options);
        }

        /** Without the checks of the Java class; {@code writer} is only there to call on. */
        long runNative(QuillHeifWriter writer, long handle, byte[] frame, Bitmap bitmap, FileDescriptor fd,
                QuillHeifWriter.Options options) {
            if (this == PHOTO) return writer.nativeProcessHeicPhotoFrame(handle, frame, null, fd);
            if (this == LIVE_PHOTO) return writer.nativeCreateLivePhoto(handle, frame, null, fd, options);
            return writer.nativeCreateLivePhotoByBmp(handle, bitmap, null, fd, options);
        }
    }

    @BeforeEach
    void openFiles() throws IOException {
        mVideo = open("clip", kVideo);
        mOptions.setVideoFd(mVideo.getFD());
        mOutput = open("photo.heic", new byte[0]);
        mFd = mOutput.getFD();
    }

    @AfterEach
    void closeFiles() throws IOException {
        mVideo.close();
        mOutput.close();
    }

    /** Without equal neighbours. */
    private static byte[] bytes(int count, int step) {
        byte[] bytes = new byte[count];
        for (int i = 0; i < count; ++i) bytes[i] = (byte) (i * step + i / 100);
        return bytes;
    }

    private static Bitmap bitmap() {
        Bitmap bitmap = Bitmap.createBitmap(kLayout.width(), kLayout.height(), Bitmap.Config.ARGB_8888);
        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(kFrame));
        return bitmap;
    }

    static QuillHeifWriter writer() {
        return new QuillHeifWriter(kLayout, 90, 0);
    }

    private static long nativeWriter(QuillHeifWriter writer, FrameLayout layout) {
        long handle = writer.nativeSetup();
        assertEquals(0, writer.nativeCreate(handle, layout.width(), layout.height(), layout.stride(),
                layout.sliceHeight(), layout.format().code(), 90, 0));
        return handle;
    }

    private Path in(String name) {
        return mFolder.resolve(name);
    }

    private RandomAccessFile open(String name, byte[] content) throws IOException {
        return new RandomAccessFile(Files.write(in(name), content).toFile(), "rw");
    }

    /** Has a fresh writer write to the emptied output. */
    private byte[] write(Call call) throws IOException {
        mOutput.setLength(0);
        mOutput.seek(0);
        try (QuillHeifWriter writer = writer()) {
            call.run(writer, mFd, mOptions);
        }
        return Files.readAllBytes(in("photo.heic"));
    }

    private static <T extends Throwable> void assertThrown(Class<T> kind, String part, Executable call) {
        String message = assertThrows(kind, call).getMessage();
        assertTrue(message.contains(part), message);
    }

    private static void assertIllegal(String part, Executable call) {
        assertThrown(IllegalArgumentException.class, part, call);
    }

    private static void assertNull(String name, Executable call) {
        assertThrown(NullPointerException.class, name, call);
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

    @Test
    void files_ThatDoNotServeAreRefusedAndLeftAlone() throws Exception {
        assertEquals(0, new ProcessBuilder("mkfifo", in("pipe").toString()).start().waitFor());
        QuillHeifWriter.Options withVideo = new QuillHeifWriter.Options().setVideoFd(mVideo.getFD());
        try (QuillHeifWriter writer = writer();
                RandomAccessFile pipe = new RandomAccessFile(in("pipe").toFile(), "rw");
                RandomAccessFile huge = open("huge", new byte[0]);
                FileInputStream readOnly = new FileInputStream(in("photo.heic").toFile());
                FileOutputStream writeOnly = new FileOutputStream(in("photo.heic").toFile())) {
            huge.setLength(1L << 31);
            Map<FileDescriptor, String> sources = Map.of(pipe.getFD(), "is not a regular file", huge.getFD(),
                    "is too large", writeOnly.getFD(), "is not open for reading", readOnly.getFD(),
                    "is the file that the photo goes to");
            sources.forEach((fd, why) -> {
                assertFails(Content.UNCHANGED, "options.videoFd " + why, () -> Call.LIVE_BITMAP.run(writer, mFd,
                        new QuillHeifWriter.Options().setVideoFd(fd)));
                assertFails(Content.UNCHANGED, "options.gainmapFd " + why, () -> Call.LIVE_PHOTO.run(writer, mFd,
                        withVideo.setGainmapFd(fd)));
            });
            Map<FileDescriptor, String> outputs = Map.of(pipe.getFD(), "is not a regular file", huge.getFD(),
                    "is not an empty file", readOnly.getFD(), "is not open for writing");
            outputs.forEach((fd, why) -> assertFails(Content.UNCHANGED, "fd " + why,
                    () -> Call.PHOTO.run(writer, fd, null)));
            assertFails(Content.UNCHANGED, "fd is not open for reading",
                    () -> Call.LIVE_PHOTO.run(writer, writeOnly.getFD(), mOptions));
            mOutput.seek(1);
            assertFails(Content.UNCHANGED, "fd does not stand", () -> Call.PHOTO.run(writer, mFd, null));
            assertEquals(0, mOutput.length());
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
            long photo = mOutput.length();
            for (Call second : Call.values()) {
                assertThrows(IllegalStateException.class, () -> second.run(writer, mFd, mOptions));
            }
            assertEquals(photo, mOutput.length());
        }
    }

    @Test
    void livePhoto_OfFrameAndBitmapAreTheSameAndReadTheVideoFromItsStart() throws IOException {
        mOptions.setFileExtender(new byte[0]).setXmpData("<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>");
        mVideo.seek(17);
        byte[] photo = write(Call.LIVE_PHOTO);
        byte[] end = ByteBuffer.allocate(kVideo.length + 8).put(kVideo).putInt(8).put("qext".getBytes()).array();
        assertArrayEquals(end, Arrays.copyOfRange(photo, photo.length - end.length, photo.length));
        assertArrayEquals(photo, write(Call.LIVE_BITMAP));
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
    void interrupt_ThatIsPendingChangesNothingAndStays(Call call) throws Exception {
        byte[] photo = write(call);
        Thread.currentThread().interrupt();
        assertArrayEquals(photo, write(call));
        assertTrue(mVideo.length() == kVideo.length && mOutput.length() == photo.length, "the files are still open");
        assertTrue(Thread.interrupted());
    }

    private static void assertNotSetUp(String who, Executable call) {
        assertThrown(IllegalStateException.class, who + " was not set up correctly", call);
    }

    @Test
    void native_ZeroHandlesThrowAndMissingArgumentsGiveMinusOne() throws Exception {
        QuillHeifWriter writer = writer();
        long handle = nativeWriter(writer, kLayout);
        Bitmap recycled = bitmap();
        recycled.recycle();
        assertNotSetUp("Writer", () -> writer.nativeCreate(0, 96, 80, 96, 80, 3, 90, 0));
        assertNotSetUp("Muxer", () -> writer.nativeDestory(0));
        QuillHeifWriter.Options none = new QuillHeifWriter.Options();
        QuillHeifWriter.Options closed = new QuillHeifWriter.Options().setVideoFd(new FileDescriptor());
        for (Call call : Call.values()) {
            assertNotSetUp("Muxer", () -> call.runNative(writer, 0, kFrame, bitmap(), mFd, mOptions));
            assertEquals(-1, call.runNative(writer, handle, null, null, mFd, mOptions));
            assertEquals(-1, call.runNative(writer, handle, new byte[0], recycled, mFd, mOptions));
            assertEquals(-1, call.runNative(writer, handle, kFrame, bitmap(), null, mOptions));
            for (QuillHeifWriter.Options options : new QuillHeifWriter.Options[] {null, none, closed}) {
                if (call == Call.PHOTO) continue;
                assertEquals(-1, call.runNative(writer, handle, kFrame, bitmap(), mFd, options));
            }
        }
        assertEquals(0, mOutput.length());
        writer.nativeDestory(handle);
        writer.close();
    }

    /** What may be missing of a frame array: the tail of its last chroma row that holds nothing of the picture. */
    @ParameterizedTest
    @EnumSource
    void native_FrameIsTakenUnlessPartOfThePictureIsMissing(ColorFormat format) throws Exception {
        FrameLayout layout = new FrameLayout(96, 80, 112, 80, format);
        int chroma = 112 * 80;
        for (long length : new long[] {layout.frameBytes(), layout.leastFrameBytes(), layout.leastFrameBytes() - 1}) {
            boolean taken = length >= layout.leastFrameBytes();
            byte[] frame = bytes((int) length, 37);
            byte first = frame[format == ColorFormat.NV21 && taken ? chroma + 1 : chroma];
            mOutput.setLength(0);
            mOutput.seek(0);
            try (QuillHeifWriter writer = writer()) {
                long handle = nativeWriter(writer, layout);
                assertEquals(taken ? 0 : -1, Call.PHOTO.runNative(writer, handle, frame, null, mFd, null));
                writer.nativeDestory(handle);
            }
            assertEquals(taken, mOutput.length() > 0);
            assertEquals(first, frame[chroma], "NV21 is in NV12 order afterwards");
        }
    }

    /** Descriptors and threads of this process. */
    private static String held() {
        return new File("/proc/self/fd").list().length + " and " + new File("/proc/self/task").list().length;
    }

    /** An app's life in a process of its own; its argument is the file to write. */
    static final class App {
        private static void writeStill(String path) throws Exception {
            Field streams = FileDescriptor.class.getDeclaredField("otherParents");
            streams.setAccessible(true);
            try (RandomAccessFile file = new RandomAccessFile(path, "rw")) {
                file.setLength(0);
                writer().writePhoto(kFrame, null, file.getFD());  // which releases it, too
                if (streams.get(file.getFD()) != null) throw new AssertionError("a stream is on the descriptor");
            }
        }

        public static void main(String[] paths) throws Exception {
            try {
                writeStill(paths[0]);
            } catch (HeifWriteException e) {
                System.out.println(e.content() + " " + e.getMessage().replaceAll("\\d+ ms", "N ms"));
                return;
            }
            String before = held();
            for (int i = 0; i < 1000; ++i) writeStill(paths[0]);
            System.out.println(before.equals(held()) ? "nothing is left" : before + " became " + held());
            for (int i = 0; i < 200; ++i) writer();
            while (!before.equals(held())) System.gc();
            System.out.println("nothing leaks");
        }
    }

    /** What the app says on a device of the test's choice. */
    private String runApp(String variable, String value) throws IOException, InterruptedException {
        List<String> command = CommandFixture.java(App.class, in("photo.heic"));
        command.addAll(1, List.of("-Xcheck:jni", "-XX:+UseSerialGC", "-XX:-UseDynamicNumberOfCompilerThreads",
                "--add-opens=java.base/java.io=ALL-UNNAMED"));
        ProcessBuilder builder = new ProcessBuilder(command).redirectErrorStream(true);
        builder.environment().putAll(Map.of(variable, value, "QUILL_LOG", "warn"));
        Process process = builder.start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(0, process.waitFor(), output);
        return output;
    }

    @Test
    void app_LeavesNothingAndForgottenWritersAreReleasedAndLogged() throws Exception {
        String output = runApp("QUILL_PROPERTIES", "debug.quill.host.encoder=free");
        assertTrue(output.contains("nothing is left\n") && output.endsWith("nothing leaks\n"), output);
        assertEquals(200, output.split("W QuillHeifWriter: A writer was never closed", -1).length - 1, output);
    }

    @Test
    void app_EncoderThatRefusesTheFrameIsNotBlamedOnTheFile() throws Exception {
        String output = runApp("QUILL_DEVICE", "no-encoder");
        String refusal = Content.UNCHANGED + " Still of " + kLayout
                + ": the native writer gave up after N ms. The file is as it was\n";
        assertTrue(output.endsWith(refusal), output);
    }
}
