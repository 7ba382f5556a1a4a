package com.quill.media;

import android.graphics.Bitmap;
import java.io.FileDescriptor;
import java.util.Objects;
import java.util.function.LongSupplier;

/**
 * Writes one camera frame as a HEIF still, or as a live photo, to an open file.
 *
 * <p>A writer takes one frame in its life: make it, write, close it. Making it starts an encoder and two threads; they
 * end with the frame that was written, with {@link #close}, or, as a leak that is logged, when a forgotten writer is
 * collected. The methods may be called from any thread, one at a time: {@link #close} waits for a frame being written.
 * A thread's interrupt is left alone and ends no call.
 *
 * <p>Arguments are checked before anything is written, and one that is refused does not use the writer up. Null is a
 * NullPointerException with the argument's name, a value out of range an IllegalArgumentException, a call at the wrong
 * time an IllegalStateException, a file that does not serve a {@link HeifWriteException}.
 */
public final class QuillHeifWriter implements AutoCloseable {
    static {
        System.loadLibrary("quillheifwriter");
    }

    private static final int kMaxQuality = 100;
    private static final long kNanosPerMilli = 1000000;
    // Destroys native writers, for which any object will do: they are known by their handles.
    private static final QuillHeifWriter kDestroyer = new QuillHeifWriter();

    private final FrameLayout mLayout;
    private final NativeHandle mNative;
    private boolean mFrameTaken;

    /** What a live photo has besides its still. Descriptors stay the caller's; their files are read from the start. */
    public static final class Options {
        private static final int kSectionHeaderBytes = 8;

        // The native library reads these four by name.
        private String xmpData = "";
        private byte[] fileExtender;
        private FileDescriptor gainmapFd;
        private FileDescriptor videoFd;

        /** Options without anything; a video has to follow. */
        public Options() {}

        /**
         * Sets the motion-photo XMP packet.
         *
         * @param xmp the packet, which the file gets in UTF-8; empty, as at the start, for none
         * @return this
         */
        public Options setXmpData(String xmp) {
            xmpData = Objects.requireNonNull(xmp, "xmp");
            return this;
        }

        /**
         * Sets bytes of the app's own for the end of the file.
         *
         * @param extender the bytes, which are not copied; null for none
         * @return this
         */
        public Options setFileExtender(byte[] extender) {
            fileExtender = extender;
            return this;
        }

        /**
         * Sets the gain-map image.
         *
         * @param fd a regular file, open for reading, below 2 GiB; null for none
         * @return this
         */
        public Options setGainmapFd(FileDescriptor fd) {
            gainmapFd = fd;
            return this;
        }

        /**
         * Sets the video, which every live photo has.
         *
         * @param fd a regular file, open for reading, below 2 GiB
         * @return this
         */
        public Options setVideoFd(FileDescriptor fd) {
            videoFd = fd;
            return this;
        }

        /** What the sections behind the still take, each with its header. Throws when one cannot be written. */
        private long sectionBytes(OutputFile output) throws HeifWriteException {
            output.require(output.isReadable(), "is not open for reading, too, to see that the photo is whole");
            long bytes = fileSection(videoFd, "options.videoFd", output);
            if (gainmapFd != null) bytes += fileSection(gainmapFd, "options.gainmapFd", output);
            if (fileExtender != null) bytes += kSectionHeaderBytes + fileExtender.length;
            return bytes;
        }

        private static long fileSection(FileDescriptor fd, String name, OutputFile output) throws HeifWriteException {
            OpenFile file = new OpenFile(fd, name);
            file.require(file.isReadable(), "is not open for reading");
            file.require(!file.isSameFileAs(output), "is the file that the photo goes to");
            file.require(file.size() <= Integer.MAX_VALUE, "is too large: a section holds less than 2 GiB");
            return kSectionHeaderBytes + file.size();
        }
    }

    /**
     * A writer for one frame of the given layout.
     *
     * @param layout the frame's layout
     * @param quality 0 (smallest file) to 100 (best picture)
     * @param rotation degrees by which a viewer turns the picture clockwise: 0, 90, 180 or 270
     */
    public QuillHeifWriter(FrameLayout layout, int quality, int rotation) {
        mLayout = Objects.requireNonNull(layout, "layout");
        if (quality < 0 || quality > kMaxQuality) {
            throw new IllegalArgumentException("Quality " + quality + " is not within 0 to " + kMaxQuality);
        }
        if (rotation != 0 && rotation != 90 && rotation != 180 && rotation != 270) {
            throw new IllegalArgumentException("Rotation " + rotation + " is not 0, 90, 180 or 270");
        }
        mNative = new NativeHandle(this, createNative(quality, rotation), kDestroyer::nativeDestory);
    }

    private QuillHeifWriter() {
        mLayout = null;
        mNative = null;
    }

    /**
     * Writes a still. Blocks until the file is complete, for about ten seconds at most.
     *
     * @param frame the frame as the layout describes it; an NV21 frame is in NV12 order afterwards
     * @param exif the EXIF block, "Exif", 0, 0 and a TIFF structure, or null for none
     * @param fd an empty regular file, open for writing; it is not closed
     * @throws HeifWriteException when no whole still was written, or when a file was refused
     */
    public synchronized void writePhoto(byte[] frame, byte[] exif, FileDescriptor fd) throws HeifWriteException {
        requireUnused();
        checkFrame(frame);
        write("Still", new OutputFile(fd), 0, () -> nativeProcessHeicPhotoFrame(mNative.value(), frame, exif, fd));
    }

    /**
     * Writes a live photo: the still as {@link #writePhoto} does, followed by what the options hold.
     *
     * @param frame the frame as the layout describes it; an NV21 frame is in NV12 order afterwards
     * @param exif the EXIF block, or null for none
     * @param fd an empty regular file, open for reading and writing; it is not closed
     * @param options the video and what else there is
     * @throws HeifWriteException when not all of it was written, or when a file was refused
     */
    public synchronized void writeLivePhoto(byte[] frame, byte[] exif, FileDescriptor fd, Options options)
            throws HeifWriteException {
        requireUnused();
        checkFrame(frame);
        writeLive(fd, options, () -> nativeCreateLivePhoto(mNative.value(), frame, exif, fd, options));
    }

    /**
     * Writes a live photo whose still is a bitmap. The layout must be the bitmap's: RGBA8888, its size, its row length
     * and no padding rows.
     *
     * @param bitmap the picture, ARGB_8888
     * @param exif the EXIF block, or null for none
     * @param fd an empty regular file, open for reading and writing; it is not closed
     * @param options the video and what else there is
     * @throws HeifWriteException when not all of it was written, or when a file was refused
     */
    public synchronized void writeLivePhoto(Bitmap bitmap, byte[] exif, FileDescriptor fd, Options options)
            throws HeifWriteException {
        requireUnused();
        checkBitmap(bitmap);
        writeLive(fd, options, () -> nativeCreateLivePhotoByBmp(mNative.value(), bitmap, exif, fd, options));
    }

    /** Releases a writer that has written nothing; of no effect on others. */
    @Override
    public synchronized void close() {
        mNative.destroy();
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

    private void requireUnused() {
        if (mFrameTaken) throw new IllegalStateException("The writer has taken its one frame");
        if (mNative.value() == 0) throw new IllegalStateException("The writer is closed");
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
        if (bitmap.isRecycled()) throw new IllegalArgumentException("The bitmap is recycled");
        boolean fits = mLayout.format() == ColorFormat.RGBA8888 && bitmap.getConfig() == Bitmap.Config.ARGB_8888
                && bitmap.getWidth() == mLayout.width() && bitmap.getHeight() == mLayout.sliceHeight()
                && bitmap.getRowBytes() == (long) mLayout.stride() * mLayout.format().sampleBytes();
        if (!fits) {
            throw new IllegalArgumentException("A bitmap of " + bitmap.getWidth() + "x" + bitmap.getHeight() + " "
                    + bitmap.getConfig() + ", " + bitmap.getRowBytes() + " bytes a row, is no frame of " + mLayout);
        }
    }

    private void writeLive(FileDescriptor fd, Options options, LongSupplier nativeMethod) throws HeifWriteException {
        Objects.requireNonNull(options, "options");
        OutputFile output = new OutputFile(fd);
        write("Live photo", output, options.sectionBytes(output), nativeMethod);
    }

    /** {@code sectionBytes}: what is appended whether or not there is a still before it. */
    private void write(String kind, OutputFile output, long sectionBytes, LongSupplier nativeMethod)
            throws HeifWriteException {
        mFrameTaken = true;
        long start = System.nanoTime();
        long result;
        long millis;
        try {
            result = nativeMethod.getAsLong();
            millis = (System.nanoTime() - start) / kNanosPerMilli;
        } finally {
            mNative.destroy();  // before the file is looked at: a frame that timed out may be written until then
        }
        String said =
                result == 0 ? "saw no failure, so the file system may be full" : "gave up after " + millis + " ms";
        if (result == 0 && sectionBytes > 0) said += ", or the video or gain map changed or unreadable";
        output.requireWhole(kind + " of " + mLayout + ": the native writer " + said, result == 0, sectionBytes);
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
