package com.quill.cli;

import com.quill.files.AtomicOutput;
import com.quill.inspect.ExifBlock;
import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import com.quill.media.QuillHeifWriter;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Locale;

/** Turns photographs into HEIF stills through the native library, as a camera app does. */
final class StillConversion {
    /** Take the rotation from the photograph. */
    static final int kAutomaticRotation = -1;

    private static final int kUsualSide = 32768;
    private static final int kBits = 8;  // of a sample in every format but P010

    private final ColorFormat mFormat;  // null: by the picture
    private final int mQuality;
    private final int mRotation;
    private final EncoderPreset mPreset;  // null: by the picture

    /** What was written. */
    static final class Result {
        final FrameLayout mLayout;
        final long mBytes;
        final long mNanos;
        final Losses mLosses;

        Result(FrameLayout layout, long bytes, long nanos, Losses losses) {
            mLayout = layout;
            mBytes = bytes;
            mNanos = nanos;
            mLosses = losses;
        }
    }

    /** What is made of a frame. */
    interface Content {
        /** Has the writer write everything to the output. */
        void write(QuillHeifWriter writer, Frame frame, AtomicOutput output) throws IOException;

        /** Throws when {@code file} is not what was to be written. */
        void check(Path file) throws IOException;

        /** What follows the still. */
        long appendedBytes();
    }

    /** A photograph as the library takes it. */
    static final class Frame {
        final Path mPhoto;
        final FrameLayout mLayout;
        final byte[] mPixels;
        final byte[] mExif;  // null for none
        final int mRotation;
        final Losses mLosses;
        final long mNanos;  // that it took

        Frame(Path photo, FrameLayout layout, byte[] pixels, byte[] exif, int rotation, Losses losses, long nanos) {
            mPhoto = photo;
            mNanos = nanos;
            mLayout = layout;
            mPixels = pixels;
            mExif = exif;
            mRotation = rotation;
            mLosses = losses;
        }
    }

    private static final class StillContent implements Content {
        @Override
        public void write(QuillHeifWriter writer, Frame frame, AtomicOutput output) throws IOException {
            writer.writePhoto(frame.mPixels, frame.mExif, output.descriptor());
        }

        @Override
        public void check(Path file) throws IOException {
            HeifFileCheck.check(file);
        }

        @Override
        public long appendedBytes() {
            return 0;
        }
    }

    /**
     * Every still in one quality and frame format; a null format is chosen by the picture. Rotation in degrees or
     * {@link #kAutomaticRotation}. A null preset is chosen by the picture.
     */
    StillConversion(ColorFormat format, int quality, int rotation, EncoderPreset preset) {
        mPreset = preset;
        mFormat = format;
        mQuality = quality;
        mRotation = rotation;
    }

    /** Writes a still to {@code target}, or leaves that as it was and throws an IOException that says why. */
    Result write(Frame frame, Path target) throws IOException {
        return write(frame, target, new StillContent());
    }

    /** As above, for a still and what goes with it. */
    Result write(Frame frame, Path target, Content content) throws IOException {
        long start = System.nanoTime();
        try (AtomicOutput output = new AtomicOutput(target)) {
            write(frame, content, output);
        }
        return new Result(frame.mLayout, Files.size(target), frame.mNanos + System.nanoTime() - start, frame.mLosses);
    }

    /** Decodes a photograph. An IOException says why it cannot be. */
    Frame load(Path file) throws IOException {
        long start = System.nanoTime();
        Photograph photo = Photograph.read(file);
        ExifBlock exif = new ExifBlock(photo.exif());
        Orientation orientation = mRotation == kAutomaticRotation
                ? Orientation.ofTiff(exif.orientation())
                : Orientation.ofRotation(mRotation);
        // The container turns the picture now; a reader that heeds both would turn it twice.
        exif.setUpright();
        if (photo.pixels().isConverted()) exif.setSrgb();
        FrameLayout layout = layoutOf(photo.pixels());
        compareDepths(photo, layout.format());
        boolean unusual = Math.max(layout.width(), layout.height()) > kUsualSide;
        if (unusual) photo.losses().note("some readers take no side above " + kUsualSide + " pixels");
        byte[] pixels = new byte[Math.toIntExact(layout.frameBytes())];
        photo.pixels().fill(layout, pixels, photo.losses());
        if (orientation.mMirrored) Plane.of(layout).forEach(plane -> plane.mirror(pixels));
        return new Frame(file, layout, pixels, photo.exif(), orientation.mRotation, photo.losses(),
                System.nanoTime() - start);
    }

    private static void compareDepths(Photograph photo, ColorFormat format) {
        boolean deep = photo.pixels().bits() > kBits;
        if (deep && format != ColorFormat.P010) {
            photo.losses().add("bits beyond " + kBits + " a sample (--format p010 keeps ten)");
        } else if (!deep && format == ColorFormat.P010) {
            photo.losses().note("ten bits hold no more of it than " + kBits);
        }
    }

    private FrameLayout layoutOf(Pixels pixels) throws IOException {
        int width = pixels.width();
        int height = pixels.height();
        try {
            return new FrameLayout(width, height, width, height, formatFor(width, height));
        } catch (IllegalArgumentException e) {
            throw new IOException(e.getMessage(), e);
        }
    }

    // The encoder takes chroma as it is, and of an odd column or row it takes only a part.
    private ColorFormat formatFor(int width, int height) throws IOException {
        boolean even = width % 2 == 0 && height % 2 == 0;
        if (mFormat == null) return even ? ColorFormat.I420 : ColorFormat.RGBA8888;
        if (even || mFormat == ColorFormat.RGBA8888) return mFormat;
        throw new IOException("the format " + nameOf(mFormat) + " takes an even width and height, and the picture has "
                + width + "x" + height + "; leave --format out, or take rgba");
    }

    private void write(Frame frame, Content content, AtomicOutput output) throws IOException {
        long start = System.nanoTime();
        boolean encoded = false;
        double waits = EncoderPreset.prepare(mPreset, frame.mLayout);
        try (QuillHeifWriter writer = new QuillHeifWriter(frame.mLayout, mQuality, frame.mRotation)) {
            content.write(writer, frame, output);
            encoded = true;
            output.publish(content::check, frame.mPhoto);
        } catch (IOException e) {
            // No still is larger than its frame.
            String full = output.whyFull(frame.mPixels.length + content.appendedBytes());
            if (full != null) throw new IOException("the output cannot be written: " + full, e);
            if (encoded) throw e;
            throw new IOException(whyNotEncoded(frame.mLayout, (System.nanoTime() - start) / 1e9 >= waits), e);
        }
    }

    private static String whyNotEncoded(FrameLayout layout, boolean late) {
        String frame = layout.width() + "x" + layout.height() + " " + nameOf(layout.format());
        if (late) {
            return "the encoder did not finish a picture of " + frame + " in time; --verbose shows its log";
        }
        return "the encoder refuses a picture of " + frame + "; --verbose shows why";
    }

    /** A format's name on the command line. */
    static String nameOf(ColorFormat format) {
        return format == ColorFormat.RGBA8888 ? "rgba" : format.name().toLowerCase(Locale.ROOT);
    }
}
