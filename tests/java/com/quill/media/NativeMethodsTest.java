package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;
import static org.junit.jupiter.params.provider.Arguments.arguments;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.concurrent.TimeUnit;
import java.util.stream.IntStream;
import java.util.stream.Stream;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.EnumSource;
import org.junit.jupiter.params.provider.MethodSource;

/** The six methods as the library registers them, without the checks of the Java class before them. */
class NativeMethodsTest {
    private static final int kWidth = 96;
    private static final int kHeight = 80;
    private static final int kStride = 112;

    @TempDir
    Path mFolder;

    private final QuillHeifWriter.Options mOptions = new QuillHeifWriter.Options();
    private QuillHeifWriter mWriter;  // only to call on: the tests use handles of their own
    private RandomAccessFile mFile;
    private RandomAccessFile mVideo;
    private long mHandle;

    /** The methods that take a frame as an array. */
    private enum Method { PHOTO, LIVE_PHOTO }

    @BeforeEach
    void setUp() throws IOException {
        mWriter = new QuillHeifWriter(layout(ColorFormat.NV12), 90, 0);
        mHandle = mWriter.nativeSetup();
        mFile = new RandomAccessFile(path().toFile(), "rw");
        mVideo = new RandomAccessFile(mFolder.resolve("clip").toFile(), "rw");
        mOptions.setVideoFd(mVideo.getFD());
    }

    @AfterEach
    void tearDown() throws IOException {
        mWriter.nativeDestory(mHandle);
        mWriter.close();
        mFile.close();
        mVideo.close();
    }

    private Path path() {
        return mFolder.resolve("still.heic");
    }

    private static FrameLayout layout(ColorFormat format) {
        return new FrameLayout(kWidth, kHeight, kStride, kHeight, format);
    }

    private void create(int format) {
        assertEquals(0, mWriter.nativeCreate(mHandle, kWidth, kHeight, kStride, kHeight, format, 90, 0));
    }

    private long write(Method method, long handle, byte[] frame, byte[] exif, FileDescriptor fd) {
        return method == Method.PHOTO ? mWriter.nativeProcessHeicPhotoFrame(handle, frame, exif, fd)
                                      : mWriter.nativeCreateLivePhoto(handle, frame, exif, fd, mOptions);
    }

    private long writePhoto(byte[] frame, byte[] exif) throws IOException {
        return write(Method.PHOTO, mHandle, frame, exif, mFile.getFD());
    }

    private String written() throws IOException {
        return Files.readString(path(), StandardCharsets.ISO_8859_1);
    }

    private static void assertNotSetUp(String message, Executable call) {
        assertEquals(message, assertThrows(IllegalStateException.class, call).getMessage());
    }

    @Test
    void handle_ZeroThrowsWithTheMessageOfEachMethod() throws IOException {
        byte[] frame = Frames.frame(layout(ColorFormat.NV12));
        FileDescriptor fd = mFile.getFD();
        Bitmap bitmap = Bitmap.createBitmap(kWidth, kHeight, Bitmap.Config.ARGB_8888);
        String muxer = "Muxer was not set up correctly";
        assertNotSetUp("Writer was not set up correctly", () -> mWriter.nativeCreate(0, 96, 80, 96, 80, 3, 90, 0));
        assertNotSetUp(muxer, () -> mWriter.nativeDestory(0));
        assertNotSetUp(muxer, () -> write(Method.PHOTO, 0, frame, null, fd));
        assertNotSetUp(muxer, () -> write(Method.LIVE_PHOTO, 0, frame, null, fd));
        assertNotSetUp(muxer, () -> mWriter.nativeCreateLivePhotoByBmp(0, bitmap, null, fd, mOptions));
    }

    /** The array as an NV21 frame leaves it; what it lacks of its last pair is as in the pairs before. */
    private static byte[] inNv12Order(byte[] frame) {
        byte[] swapped = Arrays.copyOf(frame, (int) layout(ColorFormat.NV21).frameBytes());
        for (int i = frame.length; i < swapped.length; ++i) swapped[i] = swapped[i - 4];
        for (int row = kHeight; row < kHeight * 3 / 2; ++row) {
            for (int i = kStride * row; i < kStride * row + kWidth; i += 2) {
                byte first = swapped[i];
                swapped[i] = swapped[i + 1];
                swapped[i + 1] = first;
            }
        }
        return Arrays.copyOf(swapped, frame.length);
    }

    /** What a frame array may lack: the tail of its last chroma row that holds nothing of the picture. */
    static Stream<Arguments> frameArrays() {
        return Stream.of(ColorFormat.values()).flatMap(format -> Stream.of(Method.values()).flatMap(method -> {
            int whole = (int) layout(format).frameBytes();
            int least = (int) layout(format).leastFrameBytes();
            return Stream.of(arguments(method, format, whole, 0), arguments(method, format, least, 0),
                    arguments(method, format, least - 1, -1), arguments(method, format, 0, -1));
        }));
    }

    @ParameterizedTest
    @MethodSource("frameArrays")
    void frame_ArrayIsTakenUnlessItLacksPartOfThePicture(Method method, ColorFormat format, int length, long result)
            throws IOException {
        create(format.code());
        byte[] frame = Arrays.copyOf(Frames.frame(layout(format)), length);
        byte[] expected = format == ColorFormat.NV21 && result == 0 ? inNv12Order(frame) : frame.clone();
        assertEquals(result, write(method, mHandle, frame, null, mFile.getFD()));
        assertArrayEquals(expected, frame);
        assertEquals(result == 0 ? 4 : -1, written().indexOf("ftyp"));
        assertTrue(mFile.getFD().valid(), "the descriptor is the caller's to close");
    }

    @ParameterizedTest
    @EnumSource
    void frame_MissingArgumentsGiveMinusOneWithoutException(Method method) throws IOException {
        create(ColorFormat.NV12.code());
        assertEquals(-1, write(method, mHandle, Frames.frame(layout(ColorFormat.NV12)), null, null));
        assertEquals(-1, write(method, mHandle, null, null, mFile.getFD()));
        assertEquals("", written());
    }

    @ParameterizedTest
    @EnumSource
    void frame_ReadOnlyOutputIsRefusedBeforeTheFrameIsTouched(Method method) throws IOException {
        create(ColorFormat.NV21.code());
        byte[] frame = Frames.frame(layout(ColorFormat.NV21));
        byte[] before = frame.clone();
        try (RandomAccessFile readOnly = new RandomAccessFile(path().toFile(), "r")) {
            assertEquals(-1, write(method, mHandle, frame, null, readOnly.getFD()));
        }
        assertArrayEquals(before, frame);
        assertEquals("", written());
    }

    @ParameterizedTest
    @CsvSource({
        "0, 80, 112, 80", "96, 0, 112, 80", "-96, 80, 112, 80", "96, -80, 112, 80", "96, 80, -112, -80",
        "113, 80, 112, 80", "96, 81, 112, 80", "-2147483648, -2147483648, -2147483648, -2147483648",
        "2147483647, 2147483647, 2147483647, 2147483647", "96, 80, 536870912, 80", "96, 80, 23171, 23171",
    })
    @Timeout(value = 8, unit = TimeUnit.SECONDS)  // below the library's own ten seconds
    void create_GeometryThatCannotBeRefusesTheNextFrameAtOnce(int width, int height, int stride, int sliceHeight)
            throws IOException {
        for (ColorFormat format : ColorFormat.values()) {
            long handle = mWriter.nativeSetup();
            assertEquals(0, mWriter.nativeCreate(handle, width, height, stride, sliceHeight, format.code(), 90, 0));
            for (Method method : Method.values()) {
                assertEquals(-1, write(method, handle, new byte[99999], new byte[99], mFile.getFD()));
            }
            mWriter.nativeDestory(handle);
        }
        assertEquals("", written());
    }

    // Side by side, for either is only seen to fail when the library's ten seconds are over.
    @Test
    void frame_OfAnUnknownFormatOrASecondOneGivesMinusOneAndLeavesTheFileAlone() throws Exception {
        create(ColorFormat.NV12.code());
        byte[] frame = Frames.frame(layout(ColorFormat.NV12));
        assertEquals(0, writePhoto(frame, null));
        String still = written();
        Stream<Long> formats = Stream.of(-1, 5, 0x7fffffff).map(format -> {
            long handle = mWriter.nativeSetup();
            assertEquals(0, mWriter.nativeCreate(handle, kWidth, kHeight, kStride, kHeight, format, 90, 0));
            return handle;
        });
        long[] handles = Stream.concat(Stream.of(mHandle), formats).mapToLong(handle -> handle).toArray();
        long[] results = new long[handles.length];
        Thread[] callers = new Thread[handles.length];
        FileDescriptor fd = mFile.getFD();
        for (int i = 0; i < handles.length; ++i) {
            int caller = i;
            callers[i] = new Thread(() -> results[caller] = write(Method.PHOTO, handles[caller], frame.clone(), null, fd));
            callers[i].start();
        }
        for (Thread caller : callers) caller.join();
        for (int i = 1; i < handles.length; ++i) mWriter.nativeDestory(handles[i]);
        assertArrayEquals(new long[] {-1, -1, -1, -1}, results);
        assertEquals(still, written());
    }

    /** An EXIF block that gets a thumbnail only when it is read to its end, cut short or with a directory too long. */
    static Stream<byte[]> shortBlocks() {
        byte[] whole = Frames.exif();
        byte[] tooManyEntries = whole.clone();
        tooManyEntries[14] = tooManyEntries[15] = -1;
        return Stream.concat(IntStream.range(0, whole.length).mapToObj(length -> Arrays.copyOf(whole, length)),
                Stream.of(tooManyEntries));
    }

    @ParameterizedTest
    @MethodSource("shortBlocks")
    void exif_BlockTooShortForItsDirectoryPassesThroughWithoutAThumbnail(byte[] block) throws IOException {
        create(ColorFormat.NV12.code());
        assertEquals(0, writePhoto(Frames.frame(layout(ColorFormat.NV12)), block));
        assertTrue(!written().contains("JFIF"), "a thumbnail was added");
    }

    @Test
    void exif_WholeBlockGetsAThumbnail() throws IOException {
        create(ColorFormat.NV12.code());
        assertEquals(0, writePhoto(Frames.frame(layout(ColorFormat.NV12)), Frames.exif()));
        assertTrue(written().contains("JFIF"));
    }
}
