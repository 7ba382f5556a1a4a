package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

/** The six methods as the library registers them, without the checks of the Java class before them. */
class NativeMethodsTest {
    @TempDir
    Path mFolder;

    private final FrameLayout mLayout = Frames.layout(ColorFormat.NV12);
    private QuillHeifWriter mWriter;  // only to call on: the tests use handles of their own
    private long mHandle;

    @BeforeEach
    void setUp() {
        mWriter = new QuillHeifWriter(mLayout, 90, 0);
        mHandle = mWriter.nativeSetup();
    }

    @AfterEach
    void tearDown() {
        mWriter.nativeDestory(mHandle);
        mWriter.close();
    }

    private long create(ColorFormat format) {
        FrameLayout layout = Frames.layout(format);
        return mWriter.nativeCreate(mHandle, layout.width(), layout.height(), layout.stride(), layout.sliceHeight(),
                format.code(), 90, 0);
    }

    private Path path() {
        return mFolder.resolve("still.heic");
    }

    private RandomAccessFile open() throws IOException {
        return new RandomAccessFile(path().toFile(), "rw");
    }

    private static void assertNotSetUp(String message, Executable call) {
        assertEquals(message, assertThrows(IllegalStateException.class, call).getMessage());
    }

    @Test
    void handle_ZeroThrowsWithTheMessageOfEachMethod() throws IOException {
        byte[] frame = Frames.frame(mLayout);
        assertNotSetUp("Writer was not set up correctly", () -> mWriter.nativeCreate(0, 96, 80, 96, 80, 3, 90, 0));
        assertNotSetUp("Muxer was not set up correctly", () -> mWriter.nativeDestory(0));
        try (RandomAccessFile file = open()) {
            FileDescriptor fd = file.getFD();
            assertNotSetUp("Muxer was not set up correctly",
                    () -> mWriter.nativeProcessHeicPhotoFrame(0, frame, null, fd));
        }
    }

    @ParameterizedTest
    @EnumSource
    void processFrame_EveryFormatGivesAHeifFile(ColorFormat format) throws IOException {
        assertEquals(0, create(format));
        try (RandomAccessFile file = open()) {
            byte[] frame = Frames.frame(Frames.layout(format));
            assertEquals(0, mWriter.nativeProcessHeicPhotoFrame(mHandle, frame, null, file.getFD()));
            assertTrue(file.getFD().valid(), "the descriptor is the caller's to close");
        }
        assertEquals("ftyp", new String(Files.readAllBytes(path()), 4, 4, StandardCharsets.US_ASCII));
    }

    @Test
    void processFrame_NullFrameOrDescriptorGivesMinusOneWithoutException() throws IOException {
        assertEquals(0, create(ColorFormat.NV12));
        assertEquals(-1, mWriter.nativeProcessHeicPhotoFrame(mHandle, Frames.frame(mLayout), null, null));
        try (RandomAccessFile file = open()) {
            assertEquals(-1, mWriter.nativeProcessHeicPhotoFrame(mHandle, null, null, file.getFD()));
        }
        assertEquals(0, Files.size(path()));
    }

    @Test
    void processFrame_ReadOnlyDescriptorIsRefusedBeforeTheFrameIsTouched() throws IOException {
        assertEquals(0, create(ColorFormat.NV21));
        byte[] frame = Frames.frame(mLayout);
        byte[] before = frame.clone();
        Files.createFile(path());
        try (RandomAccessFile file = new RandomAccessFile(path().toFile(), "r")) {
            assertEquals(-1, mWriter.nativeProcessHeicPhotoFrame(mHandle, frame, null, file.getFD()));
        }
        assertArrayEquals(before, frame);
    }

    @Test
    void processFrame_FrameArrayThatIsTooShortIsRefused() throws IOException {
        assertEquals(0, create(ColorFormat.NV12));
        byte[] frame = new byte[(int) mLayout.leastFrameBytes() - 1];
        try (RandomAccessFile file = open()) {
            assertEquals(-1, mWriter.nativeProcessHeicPhotoFrame(mHandle, frame, null, file.getFD()));
        }
        assertEquals(0, Files.size(path()));
    }

    @Test
    void processFrame_ArrayWithoutTheLastChromaByteIsTaken() throws IOException {
        assertEquals(0, create(ColorFormat.NV12));
        byte[] frame = new byte[(int) mLayout.leastFrameBytes()];
        try (RandomAccessFile file = open()) {
            assertEquals(0, mWriter.nativeProcessHeicPhotoFrame(mHandle, frame, null, file.getFD()));
        }
    }

    @Test
    void processFrame_Nv21ArrayIsInNv12OrderAfterwards() throws IOException {
        assertEquals(0, create(ColorFormat.NV21));
        byte[] frame = Frames.frame(mLayout);
        byte[] expected = frame.clone();
        for (int i = mLayout.stride() * mLayout.sliceHeight(); i < expected.length; i += 2) {
            expected[i] = frame[i + 1];
            expected[i + 1] = frame[i];
        }
        try (RandomAccessFile file = open()) {
            assertEquals(0, mWriter.nativeProcessHeicPhotoFrame(mHandle, frame, null, file.getFD()));
        }
        assertArrayEquals(expected, frame);
    }
}
