package com.quill.cli;

import java.io.EOFException;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.Set;

/** The video of a live photo: an MP4 (ISO/IEC 14496-14) or QuickTime file. */
final class Clip {
    static final String kMp4 = "video/mp4";
    static final String kQuickTime = "video/quicktime";

    // What may come first in a file; older QuickTime files have no 'ftyp'.
    private static final Set<String> kFirstBoxes = Set.of("ftyp", "moov", "wide", "mdat", "free", "skip");
    private static final Map<String, String> kCodecs = Map.ofEntries(Map.entry("avc1", "H.264"),
            Map.entry("avc3", "H.264"), Map.entry("hvc1", "HEVC"), Map.entry("hev1", "HEVC"),
            Map.entry("dvh1", "HEVC"), Map.entry("dvhe", "HEVC"), Map.entry("av01", "AV1"), Map.entry("vp09", "VP9"),
            Map.entry("mp4v", "MPEG-4"), Map.entry("s263", "H.263"));
    private static final int kFullBoxSize = 4;
    private static final int kHandlerTypeAt = kFullBoxSize + 4;
    private static final int kFirstEntryTypeAt = kFullBoxSize + 4 + 4;  // behind the count and the entry's size
    private static final double kMicrosecondsPerSecond = 1e6;
    private static final double kMaxMicroseconds = 1e15;  // thirty years: a duration beyond is none

    final Path mPath;
    final long mBytes;
    final String mMime;
    final String mCodec;  // null when it was not looked for
    final long mDurationUs;

    private Clip(Path path, long bytes, String mime, String codec, long durationUs) {
        mPath = path;
        mBytes = bytes;
        mMime = mime;
        mCodec = codec;
        mDurationUs = durationUs;
    }

    /** A file that is taken for an MP4 video as it is. */
    static Clip unchecked(Path path) throws IOException {
        return new Clip(path, Files.size(path), kMp4, null, 0);
    }

    /** A video that viewers can be expected to play; an IOException says why it is none. */
    static Clip read(Path path) throws IOException {
        try (RandomAccessFile file = new RandomAccessFile(path.toFile(), "r")) {
            if (file.length() == 0) throw new IOException("is empty");
            checkBeginning(file);
            List<FileBox> boxes = FileBox.list(file, 0, file.length());
            List<FileBox> movie = FileBox.list(file, find(boxes, "moov").mPayload, find(boxes, "moov").mEnd);
            String codec = codecOf(file, movie);
            return new Clip(path, file.length(), mimeOf(file, boxes.get(0)), codec,
                    durationOf(file, find(movie, "mvhd")));
        } catch (EOFException e) {
            throw new IOException("is a damaged video, or one cut short", e);
        }
    }

    private static void checkBeginning(RandomAccessFile file) throws IOException {
        file.seek(4);
        if (file.length() < 8 || !kFirstBoxes.contains(FileBox.readType(file))) {
            throw new IOException("is no MP4 or MOV video");
        }
    }

    private static FileBox find(List<FileBox> boxes, String type) throws IOException {
        FileBox box = FileBox.find(boxes, type);
        if (box == null) throw new IOException("is no MP4 or MOV video: it has no '" + type + "' box");
        return box;
    }

    private static String mimeOf(RandomAccessFile file, FileBox first) throws IOException {
        if (!first.mType.equals("ftyp")) return kQuickTime;
        file.seek(first.mPayload);
        return FileBox.readType(file).equals("qt  ") ? kQuickTime : kMp4;
    }

    private static long durationOf(RandomAccessFile file, FileBox header) throws IOException {
        file.seek(header.mPayload);
        boolean large = file.readInt() >>> 24 == 1;  // version 1: times of 64 bits
        file.skipBytes(large ? 16 : 8);
        long scale = Integer.toUnsignedLong(file.readInt());
        long duration = large ? file.readLong() : file.readInt();  // all bits set: not known
        double microseconds = scale == 0 ? 0 : duration * kMicrosecondsPerSecond / scale;
        boolean inside = file.getFilePointer() <= header.mEnd;
        if (!inside || microseconds < 1 || microseconds > kMaxMicroseconds) {
            throw new IOException("does not say how long the video is");
        }
        return (long) microseconds;
    }

    private static String codecOf(RandomAccessFile file, List<FileBox> movie) throws IOException {
        for (FileBox track : movie) {
            if (!track.mType.equals("trak")) continue;
            List<FileBox> media = inside(file, FileBox.list(file, track.mPayload, track.mEnd), "mdia");
            if (!typeAt(file, FileBox.find(media, "hdlr"), kHandlerTypeAt).equals("vide")) continue;
            List<FileBox> samples = inside(file, inside(file, media, "minf"), "stbl");
            return codecNamed(typeAt(file, FileBox.find(samples, "stsd"), kFirstEntryTypeAt));
        }
        throw new IOException("has no video track");
    }

    private static String codecNamed(String type) throws IOException {
        String codec = kCodecs.get(type);
        if (codec != null) return codec;
        String shown = type.chars().allMatch(c -> c > ' ' && c < 0x7f) ? type : "not named";
        throw new IOException("has a video track whose codec (" + shown + ") is none that viewers play");
    }

    private static List<FileBox> inside(RandomAccessFile file, List<FileBox> boxes, String type) throws IOException {
        FileBox box = FileBox.find(boxes, type);
        return box == null ? List.of() : FileBox.list(file, box.mPayload, box.mEnd);
    }

    /** Four characters of a box's payload; empty when there is no box, or too small a one. */
    private static String typeAt(RandomAccessFile file, FileBox box, int offset) throws IOException {
        if (box == null || box.payloadSize() < offset + 4) return "";
        file.seek(box.mPayload + offset);
        return FileBox.readType(file);
    }
}
