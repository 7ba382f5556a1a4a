package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.RandomAccessFile;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

/** The six methods as the library registers them, without the checks of the Java class before them. */
class NativeMethodsTest extends PhotoFixture {
    private final QuillHeifWriter mWriter = writer();  // only to call on: the tests use handles of their own

    private long create(FrameLayout layout) {
        long handle = mWriter.nativeSetup();
        assertEquals(0, mWriter.nativeCreate(handle, layout.width(), layout.height(), layout.stride(),
                layout.sliceHeight(), layout.format().code(), 90, 0));
        return handle;
    }

    private long write(Call call, long handle, byte[] frame, Bitmap bitmap, FileDescriptor fd,
            QuillHeifWriter.Options options) {
        if (call == Call.PHOTO) return mWriter.nativeProcessHeicPhotoFrame(handle, frame, null, fd);
        if (call == Call.LIVE_PHOTO) return mWriter.nativeCreateLivePhoto(handle, frame, null, fd, options);
        return mWriter.nativeCreateLivePhotoByBmp(handle, bitmap, null, fd, options);
    }

    private static void assertNotSetUp(String who, Executable call) {
        assertEquals(who + " was not set up correctly", assertThrows(IllegalStateException.class, call).getMessage());
    }

    @Test
    void arguments_ZeroHandlesThrowAndMissingOnesGiveMinusOne() throws Exception {
        long handle = create(kLayout);
        Bitmap recycled = bitmap();
        recycled.recycle();
        assertNotSetUp("Writer", () -> mWriter.nativeCreate(0, 96, 80, 96, 80, 3, 90, 0));
        assertNotSetUp("Muxer", () -> mWriter.nativeDestory(0));
        for (Call call : Call.values()) {
            assertNotSetUp("Muxer", () -> write(call, 0, kFrame, bitmap(), mFd, mOptions));
            assertEquals(-1, write(call, handle, null, null, mFd, mOptions));
            assertEquals(-1, write(call, handle, new byte[0], recycled, mFd, mOptions));
            assertEquals(-1, write(call, handle, kFrame, bitmap(), null, mOptions));
            if (call == Call.PHOTO) continue;
            assertEquals(-1, write(call, handle, kFrame, bitmap(), mFd, null));
            assertEquals(-1, write(call, handle, kFrame, bitmap(), mFd, new QuillHeifWriter.Options()));
            assertEquals(-1, write(call, handle, kFrame, bitmap(), mFd,
                    new QuillHeifWriter.Options().setVideoFd(new FileDescriptor())));
        }
        assertEquals(0, written().length);
        mWriter.nativeDestory(handle);
    }

    /** What may be missing of a frame array: the tail of its last chroma row that holds nothing of the picture. */
    @ParameterizedTest
    @EnumSource
    void frame_ArrayIsTakenUnlessPartOfThePictureIsMissing(ColorFormat format) throws Exception {
        FrameLayout layout = new FrameLayout(96, 80, 112, 80, format);
        int chroma = 112 * 80;
        for (long length : new long[] {layout.frameBytes(), layout.leastFrameBytes(), layout.leastFrameBytes() - 1}) {
            boolean taken = length >= layout.leastFrameBytes();
            byte[] frame = bytes((int) length, 37);
            byte first = frame[format == ColorFormat.NV21 && taken ? chroma + 1 : chroma];
            long handle = create(layout);
            try (RandomAccessFile output = open("photo.heic", new byte[0])) {
                assertEquals(taken ? 0 : -1, write(Call.PHOTO, handle, frame, null, output.getFD(), null));
                assertEquals(taken, output.length() > 0);
            }
            assertEquals(first, frame[chroma], "NV21 is in NV12 order afterwards");
            mWriter.nativeDestory(handle);
        }
    }
}
