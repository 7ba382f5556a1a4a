package com.quill.cli;

import com.quill.files.AtomicOutput;
import com.quill.inspect.Box;
import com.quill.inspect.LivePhotoSection;
import com.quill.media.QuillHeifWriter;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/** A live photo: the still, and behind it the video, perhaps a gain map, perhaps an extender. */
final class LiveContent implements StillConversion.Content {
    private static final int kBoxHeaderSize = 8;
    private static final long kMaxCopiedBytes = Integer.MAX_VALUE - kBoxHeaderSize;  // the library refuses 2 GiB
    private static final long kMaxExtenderBytes = 256 << 20;                         // it is held in memory

    final Clip mClip;
    private final Path mGainmap;  // null for none
    private final byte[] mExtender;  // null for none
    private final String mXmp;
    private final CopyProgress mProgress;
    private final List<Section> mSections = new ArrayList<>();

    /** A section behind the still as the file must show it. */
    private record Section(LivePhotoSection.Kind kind, long bytes) {}

    /** {@code xmp} null: the packet is made. An IOException says what cannot be used, by name. */
    LiveContent(Clip clip, Path gainmap, Path extender, Path xmp, CopyProgress progress) throws IOException {
        mClip = clip;
        mGainmap = gainmap;
        mProgress = progress;
        add(LivePhotoSection.Kind.VIDEO, clip.mPath, kMaxCopiedBytes);
        long gainmapBytes = gainmap == null ? -1 : add(LivePhotoSection.Kind.GAIN_MAP, gainmap, kMaxCopiedBytes);
        long extenderBytes = extender == null ? -1 : add(LivePhotoSection.Kind.EXTENDER, extender, kMaxExtenderBytes);
        mExtender = extender == null ? null : Files.readAllBytes(extender);
        mXmp = xmp == null ? MotionPhotoXmp.of(clip, gainmapBytes, extenderBytes) : packet(xmp);
    }

    @Override
    public void write(QuillHeifWriter writer, StillConversion.Frame frame, AtomicOutput output) throws IOException {
        QuillHeifWriter.Options options = new QuillHeifWriter.Options().setXmpData(mXmp).setFileExtender(mExtender);
        try (RandomAccessFile video = new RandomAccessFile(mClip.mPath.toFile(), "r");
                RandomAccessFile gainmap = mGainmap == null ? null : new RandomAccessFile(mGainmap.toFile(), "r")) {
            options.setVideoFd(video.getFD()).setGainmapFd(gainmap == null ? null : gainmap.getFD());
            mProgress.start(output, appendedBytes());
            writer.writeLivePhoto(frame.mPixels, frame.mExif, output.descriptor(), options);
        } finally {
            mProgress.stop();
        }
    }

    /** The sections fill the file from the still to its end, each in the size of its source. */
    @Override
    public void check(Path file) throws IOException {
        List<Box> boxes = HeifFileCheck.boxes(file);
        int still = boxes.size() - mSections.size();
        for (int i = 0; i < mSections.size(); ++i) {
            Box box = still + i < 0 ? null : boxes.get(still + i);
            Section section = mSections.get(i);
            if (box == null || !box.type().equals(section.kind.type()) || box.payloadSize() != section.bytes) {
                throw new IOException("the written file has no whole '" + section.kind.type() + "' section");
            }
        }
    }

    private long add(LivePhotoSection.Kind kind, Path file, long most) throws IOException {
        long bytes = Files.size(file);
        if (bytes > most) throw new IOException(file + " is too large: " + bytes + " bytes, more than " + most);
        mSections.add(new Section(kind, bytes));
        return bytes;
    }

    private static String packet(Path xmp) throws IOException {
        try {
            return MotionPhotoXmp.read(xmp);
        } catch (IOException e) {
            throw new IOException(xmp + ": " + FailureText.of(e), e);
        }
    }

    @Override
    public long appendedBytes() {
        return mSections.stream().mapToLong(Section::bytes).sum();
    }
}
