package com.quill.media;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.io.TempDir;

/** What an app has when it writes a photo: a frame, files, options; and the three ways to write it. */
class PhotoFixture {
    static final FrameLayout kLayout = FrameLayout.evenlyPadded(96, 80, ColorFormat.RGBA8888);
    static final byte[] kFrame = bytes((int) kLayout.frameBytes(), 37);
    static final byte[] kVideo = bytes(9001, 3);

    @TempDir
    Path mFolder;

    final QuillHeifWriter.Options mOptions = new QuillHeifWriter.Options();
    RandomAccessFile mVideo;
    RandomAccessFile mOutput;
    FileDescriptor mFd;

    enum Call {
        PHOTO, LIVE_PHOTO, LIVE_BITMAP;

        void run(QuillHeifWriter writer, FileDescriptor fd, QuillHeifWriter.Options options) throws IOException {
            if (this == PHOTO) writer.writePhoto(kFrame, null, fd);
            if (this == LIVE_PHOTO) writer.writeLivePhoto(kFrame, null, fd, options);
            if (this == LIVE_BITMAP) writer.writeLivePhoto(bitmap(), null, fd, options);
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
    static byte[] bytes(int count, int step) {
        byte[] bytes = new byte[count];
        for (int i = 0; i < count; ++i) bytes[i] = (byte) (i * step + i / 100);
        return bytes;
    }

    static Bitmap bitmap() {
        Bitmap bitmap = Bitmap.createBitmap(kLayout.width(), kLayout.height(), Bitmap.Config.ARGB_8888);
        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(kFrame));
        return bitmap;
    }

    static QuillHeifWriter writer() {
        return new QuillHeifWriter(kLayout, 90, 0);
    }

    Path in(String name) {
        return mFolder.resolve(name);
    }

    RandomAccessFile open(String name, byte[] content) throws IOException {
        return new RandomAccessFile(Files.write(in(name), content).toFile(), "rw");
    }

    byte[] written() throws IOException {
        return Files.readAllBytes(in("photo.heic"));
    }

    /** Has a fresh writer write to the emptied output. */
    byte[] write(Call call) throws IOException {
        mOutput.setLength(0);
        mOutput.seek(0);
        try (QuillHeifWriter writer = writer()) {
            call.run(writer, mFd, mOptions);
        }
        return written();
    }
}
