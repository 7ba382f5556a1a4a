package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import android.graphics.Bitmap;
import java.io.ByteArrayOutputStream;
import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Live photos of frames and of bitmaps, through the Java class and past its checks. */
class LivePhotoTest {
    private static final byte[] kVideo = bytes(9001, 3);
    private static final byte[] kGainmap = bytes(4096, 5);
    private static final byte[] kExtender = bytes(77, 7);
    private static final String kXmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">Straße</x:xmpmeta>";

    @TempDir
    Path mFolder;

    private final FrameLayout mLayout = Frames.layout(ColorFormat.RGBA8888);
    private final byte[] mFrame = Frames.frame(mLayout);
    private final QuillHeifWriter.Options mOptions = new QuillHeifWriter.Options();
    private QuillHeifWriter mWriter;
    private RandomAccessFile mVideo;
    private RandomAccessFile mOutput;

    @BeforeEach
    void setUp() throws IOException {
        mWriter = new QuillHeifWriter(mLayout, 95, 0);
        mVideo = open("clip", kVideo);
        mOutput = open("live.heic", new byte[0]);
        mOptions.setVideoFd(mVideo.getFD());
    }

    @AfterEach
    void tearDown() throws IOException {
        mWriter.close();
        mVideo.close();
        mOutput.close();
    }

    private static byte[] bytes(int count, int step) {
        byte[] bytes = new byte[count];
        for (int i = 0; i < count; ++i) bytes[i] = (byte) (i * step + i / 256);
        return bytes;
    }

    private Bitmap bitmap() {
        Bitmap bitmap = Bitmap.createBitmap(Frames.kWidth, Frames.kHeight, Bitmap.Config.ARGB_8888);
        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(mFrame));
        return bitmap;
    }

    private RandomAccessFile open(String name, byte[] content) throws IOException {
        return new RandomAccessFile(Files.write(mFolder.resolve(name), content).toFile(), "rw");
    }

    private byte[] written() throws IOException {
        return Files.readAllBytes(mFolder.resolve("live.heic"));
    }

    private static byte[] box(String type, byte[] payload) {
        return ByteBuffer.allocate(8 + payload.length).putInt(8 + payload.length)
                .put(type.getBytes(StandardCharsets.US_ASCII)).put(payload).array();
    }

    private static byte[] end(byte[] file, int count) {
        return Arrays.copyOfRange(file, file.length - count, file.length);
    }

    @Test
    void write_FrameAndBitmapGiveTheSameLivePhoto() throws Exception {
        ByteArrayOutputStream sections = new ByteArrayOutputStream();
        sections.writeBytes(box("mpvd", kVideo));
        sections.writeBytes(box("gain", kGainmap));
        sections.writeBytes(box("qext", kExtender));
        try (RandomAccessFile gainmap = open("gain.jpg", kGainmap)) {
            mOptions.setGainmapFd(gainmap.getFD()).setFileExtender(kExtender).setXmpData(kXmp);
            mVideo.seek(17);
            mWriter.writeLivePhoto(mFrame, null, mOutput.getFD(), mOptions);
            byte[] ofFrame = written();
            assertArrayEquals(sections.toByteArray(), end(ofFrame, sections.size()));
            assertTrue(new String(ofFrame, StandardCharsets.UTF_8).contains(kXmp));

            mOutput.setLength(0);
            mOutput.seek(0);
            try (QuillHeifWriter writer = new QuillHeifWriter(mLayout, 95, 0)) {
                writer.writeLivePhoto(bitmap(), null, mOutput.getFD(), mOptions);
            }
            assertArrayEquals(ofFrame, written());
            assertTrue(mOutput.getFD().valid() && mVideo.getFD().valid() && gainmap.getFD().valid());
        }
    }

    @Test
    void write_EmptyExtenderIsABareBoxAndOptionsKeepTheArray() throws IOException {
        byte[] none = new byte[0];
        mWriter.writeLivePhoto(mFrame, null, mOutput.getFD(), mOptions.setFileExtender(none));
        assertArrayEquals(box("qext", none), end(written(), 8));
    }

    @Test
    void native_MissingArgumentsGiveMinusOneAndWriteNothing() throws IOException {
        FileDescriptor out = mOutput.getFD();
        QuillHeifWriter.Options noVideo = new QuillHeifWriter.Options();
        QuillHeifWriter.Options closedVideo = new QuillHeifWriter.Options().setVideoFd(new FileDescriptor());
        long handle = mWriter.nativeSetup();
        mWriter.nativeCreate(handle, mLayout.width(), mLayout.height(), mLayout.stride(), mLayout.sliceHeight(),
                mLayout.format().code(), 95, 0);
        assertEquals(-1, mWriter.nativeCreateLivePhotoByBmp(handle, null, null, out, mOptions));
        assertEquals(-1, mWriter.nativeCreateLivePhotoByBmp(handle, bitmap(), null, null, mOptions));
        for (QuillHeifWriter.Options options : new QuillHeifWriter.Options[] {null, noVideo, closedVideo}) {
            assertEquals(-1, mWriter.nativeCreateLivePhoto(handle, mFrame, null, out, options));
            assertEquals(-1, mWriter.nativeCreateLivePhotoByBmp(handle, bitmap(), null, out, options));
        }
        Bitmap recycled = bitmap();
        recycled.recycle();
        assertEquals(-1, mWriter.nativeCreateLivePhotoByBmp(handle, recycled, null, out, mOptions));
        assertEquals(0, written().length);
        assertEquals(0, mWriter.nativeCreateLivePhoto(handle, mFrame, null, out, mOptions), "none used it up");
        mWriter.nativeDestory(handle);
    }
}
