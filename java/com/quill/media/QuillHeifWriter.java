package com.quill.media;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.io.FileInputStream;
import java.io.FileOutputStream;
import java.io.IOException;
import java.util.Objects;
import java.util.function.LongSupplier;

/**
 * Writes one camera frame as a HEIF still, or as a live photo, to an open file.
 *
 * <p>A writer takes one frame in its life: make it, write, close it. A writer that is not closed keeps its encoder and
 * a thread. Its methods may be called from any thread, one at a time; {@link #close} waits for a frame being written.
 * Arguments are checked before native code runs: null is a NullPointerException with the argument's name, a value out
 * of range an IllegalArgumentException, a call at the wrong time an IllegalStateException.
 */
public final class QuillHeifWriter implements AutoCloseable {
    static {
        System.loadLibrary("quillheifwriter");
    }

    private static final int kMaxQuality = 100;
    private static final int kSectionHeaderBytes = 8;

    private final FrameLayout mLayout;
    private long mHandle;  // the native writer's address, 0 after close
    private boolean mFrameTaken;

    /** What a live photo has besides its still. Descriptors stay the caller's; their files are read from the start. */
    public static final class Options {
        // The native library reads these four by name.
        private String xmpData = "";
        private byte[] fileExtender;
        private FileDescriptor gainmapFd;
        private FileDescriptor videoFd;

        /** The motion-photo XMP packet; empty, as at the start, for none. */
        public Options setXmpData(String xmp) {
            xmpData = Objects.requireNonNull(xmp, "xmp");
            return this;
        }

        /** Opaque bytes appended to the file, or null for none; not copied. */
        public Options setFileExtender(byte[] extender) {
            fileExtender = extender;
            return this;
        }

        /** A readable file with the gain-map image, or null for none. */
        public Options setGainmapFd(FileDescriptor fd) {
            gainmapFd = fd;
            return this;
        }

        /** A readable file with the video. Required. */
        public Options setVideoFd(FileDescriptor fd) {
            videoFd = fd;
            return this;
        }

        private void check() {
            requireValid(videoFd, "options.videoFd");
            if (gainmapFd != null) requireValid(gainmapFd, "options.gainmapFd");
        }

        /** What the sections behind the still take, each with its header. */
        private long sectionBytes() throws IOException {
            long bytes = kSectionHeaderBytes + size(videoFd);
            if (gainmapFd != null) bytes += kSectionHeaderBytes + size(gainmapFd);
            if (fileExtender != null) bytes += kSectionHeaderBytes + fileExtender.length;
            return bytes;
        }
    }

    /**
     * A writer for one frame of the given layout.
     *
     * @param quality 0 (smallest file) to 100 (best picture)
     * @param rotation degrees by which a viewer turns the picture clockwise: 0, 90, 180 or 270
     */
    public QuillHeifWriter(FrameLayout layout, int quality, int rotation) {
        mLayout = Objects.requireNonNull(layout, "layout");
        if (quality < 0 || quality > kMaxQuality) {
            throw new IllegalArgumentException("Quality " + quality + " is not within 0 to " + kMaxQuality);
        }
        if (rotation != 0 && rotation != 90 && rotation != 180 && rotation != 270) {
            throw new IllegalArgumentException("Rotation " + rotation + " is none of 0, 90, 180, 270");
        }
        mHandle = createNative(quality, rotation);
    }

    /** As above, for a {@link FrameLayout#FrameLayout} of the first five arguments. */
    public QuillHeifWriter(int width, int height, int stride, int sliceHeight, ColorFormat format, int quality,
            int rotation) {
        this(new FrameLayout(width, height, stride, sliceHeight, format), quality, rotation);
    }

    /**
     * Writes a still. Blocks until the file is complete, at most about ten seconds.
     *
     * @param frame the frame as the layout describes it; an NV21 frame is in NV12 order afterwards
     * @param exif the EXIF block, "Exif", 0, 0 and a TIFF structure, or null for none
     * @param fd a seekable file, open for writing and empty; it is not closed
     * @throws IOException when no complete file was written; what is in the file is of no use then
     */
    public synchronized void writePhoto(byte[] frame, byte[] exif, FileDescriptor fd) throws IOException {
        checkFrame(frame);
        requireValid(fd, "fd");
        write(fd, 0, () -> nativeProcessHeicPhotoFrame(mHandle, frame, exif, fd));
    }

    /**
     * Writes a live photo: the still as {@link #writePhoto} does, followed by what the options hold. That it found room
     * behind the still is not checked: the file then ends before the video's box does.
     */
    public synchronized void writeLivePhoto(byte[] frame, byte[] exif, FileDescriptor fd, Options options)
            throws IOException {
        checkFrame(frame);
        requireValid(fd, "fd");
        Objects.requireNonNull(options, "options").check();
        write(fd, options.sectionBytes(), () -> nativeCreateLivePhoto(mHandle, frame, exif, fd, options));
    }

    /**
     * Writes a live photo whose still is a bitmap. The layout must be the bitmap's: RGBA8888, its size, its row length
     * and no padding rows.
     */
    public synchronized void writeLivePhoto(Bitmap bitmap, byte[] exif, FileDescriptor fd, Options options)
            throws IOException {
        checkBitmap(bitmap);
        requireValid(fd, "fd");
        Objects.requireNonNull(options, "options").check();
        write(fd, options.sectionBytes(), () -> nativeCreateLivePhotoByBmp(mHandle, bitmap, exif, fd, options));
    }

    /** Releases the encoder and the writer's thread. A second call does nothing. */
    @Override
    public synchronized void close() {
        if (mHandle == 0) return;
        long handle = mHandle;
        mHandle = 0;
        nativeDestory(handle);
    }

    private long createNative(int quality, int rotation) {
        long handle = nativeSetup();
        if (handle == 0 || handle == -1) throw new IllegalStateException("No native writer could be set up");
        long created = -1;
        try {
            created = nativeCreate(handle, mLayout.width(), mLayout.height(), mLayout.stride(), mLayout.sliceHeight(),
                    mLayout.format().code(), quality, rotation);
        } finally {
            if (created != 0) nativeDestory(handle);
        }
        if (created != 0) throw new IllegalStateException("The native writer could not be configured");
        return handle;
    }

    private void checkFrame(byte[] frame) {
        Objects.requireNonNull(frame, "frame");
        if (frame.length < mLayout.leastFrameBytes()) {
            throw new IllegalArgumentException("The frame array holds " + frame.length + " bytes; a frame of " + mLayout
                    + " takes " + mLayout.frameBytes());
        }
    }

    private void checkBitmap(Bitmap bitmap) {
        Objects.requireNonNull(bitmap, "bitmap");
        boolean fits = mLayout.format() == ColorFormat.RGBA8888 && bitmap.getConfig() == Bitmap.Config.ARGB_8888
                && bitmap.getWidth() == mLayout.width() && bitmap.getHeight() == mLayout.sliceHeight()
                && bitmap.getRowBytes() == (long) mLayout.stride() * mLayout.format().sampleBytes();
        if (!fits) {
            throw new IllegalArgumentException("A bitmap of " + bitmap.getWidth() + "x" + bitmap.getHeight() + " "
                    + bitmap.getConfig() + ", " + bitmap.getRowBytes() + " bytes a row, is no frame of " + mLayout);
        }
    }

    /** Last of the checks: an argument that was refused does not use the writer up. */
    private void takeFrame() {
        if (mHandle == 0) throw new IllegalStateException("The writer is closed");
        if (mFrameTaken) throw new IllegalStateException("The writer has taken its one frame");
        mFrameTaken = true;
    }

    /** {@code sectionBytes}: what is appended whether or not there is a still before it. */
    private void write(FileDescriptor fd, long sectionBytes, LongSupplier nativeMethod) throws IOException {
        long start = position(fd);
        takeFrame();
        if (nativeMethod.getAsLong() != 0) {
            throw new IOException("No HEIF file was written for a frame of " + mLayout + ": the encoder does not take "
                    + "it, the file is not writable and seekable, or time ran out; the log says which");
        }
        // The library does not report how the writing of a coded still went. One without room for it is taken back.
        if (position(fd) - start <= sectionBytes) {
            throw new IOException("No still of a frame of " + mLayout + " could be written: there is no room for it");
        }
    }

    private static long size(FileDescriptor fd) throws IOException {
        return new FileInputStream(fd).getChannel().size();
    }

    /** Where the next byte goes. The stream is not closed, for the descriptor would be with it. */
    private static long position(FileDescriptor fd) throws IOException {
        return new FileOutputStream(fd).getChannel().position();
    }

    private static void requireValid(FileDescriptor fd, String name) {
        Objects.requireNonNull(fd, name);
        if (!fd.valid()) throw new IllegalArgumentException(name + " is not an open file");
    }

    // Implemented by libquillheifwriter, which registers them under these names and signatures. A handle of 0 throws;
    // other results are 0 (or a handle) on success and -1 on failure.
    native long nativeSetup();

    native long nativeCreate(long handle, int width, int height, int stride, int sliceHeight, int colorFormat,
            int quality, int rotation);

    native long nativeProcessHeicPhotoFrame(long handle, byte[] yuv, byte[] exif, FileDescriptor fd);

    native long nativeCreateLivePhoto(long handle, byte[] yuv, byte[] exif, FileDescriptor fd, Options options);

    native long nativeCreateLivePhotoByBmp(long handle, Bitmap bitmap, byte[] exif, FileDescriptor fd, Options options);

    // Spelled as the library registers it.
    native void nativeDestory(long handle);
}
