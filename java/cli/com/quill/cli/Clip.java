package com.quill.cli;

import com.quill.inspect.Box;
import com.quill.inspect.BoxTree;
import com.quill.inspect.FormatException;
import com.quill.inspect.HeifSource;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
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
    private static final int kLongestHeader = kFullBoxSize + 16 + 12;  // of a movie, up to its duration
    private static final int kHandlerTypeAt = kFullBoxSize + 4;
    private static final int kFirstEntryTypeAt = kFullBoxSize + 4 + 4;  // behind the count and the entry's size
    private static final double kMicrosecondsPerSecond = 1e6;
    private static final double kMaxMicroseconds = 1e15;  // thirty years: a longer duration is damage

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

    /** A video that viewers can be expected to play; an IOException says why it is not one. */
    static Clip read(Path path) throws IOException {
        try (HeifSource file = new HeifSource(path)) {
            if (file.size() == 0) throw new IOException("is empty");
            if (file.size() < 8 || !kFirstBoxes.contains(text(file.load(4, 4)))) {
                throw new IOException("is no MP4 or MOV video");
            }
            List<Box> boxes = BoxTree.list(file, 0, file.size());
            List<Box> movie = inside(file, find(boxes, "moov"));
            String codec = codecOf(file, movie);
            long duration = durationOf(file, find(movie, "mvhd"));
            return new Clip(path, file.size(), mimeOf(file, boxes.get(0)), codec, duration);
        } catch (FormatException e) {
            throw new IOException("is a damaged video, or one cut short", e);
        }
    }

    private static Box find(List<Box> boxes, String type) throws IOException {
        Box box = Box.first(boxes, type);
        if (box == null) throw new IOException("is no MP4 or MOV video: it has no '" + type + "' box");
        return box;
    }

    private static String mimeOf(HeifSource file, Box first) throws IOException {
        boolean quickTime = !first.type().equals("ftyp") || typeAt(file, first, 0).equals("qt  ");
        return quickTime ? kQuickTime : kMp4;
    }

    private static long durationOf(HeifSource file, Box header) throws IOException {
        int bytes = (int) Math.min(header.payloadSize(), kLongestHeader);
        ByteBuffer in = ByteBuffer.wrap(Arrays.copyOf(file.load(header.payloadOffset(), bytes), kLongestHeader));
        boolean large = in.get(0) == 1;  // version 1: times of 64 bits
        int at = kFullBoxSize + (large ? 16 : 8);
        long scale = Integer.toUnsignedLong(in.getInt(at));
        long duration = large ? in.getLong(at + 4) : in.getInt(at + 4);  // all bits set: not known
        double microseconds = scale == 0 ? 0 : duration * kMicrosecondsPerSecond / scale;
        boolean inside = at + (large ? 12 : 8) <= bytes;
        if (!inside || microseconds < 1 || microseconds > kMaxMicroseconds) {
            throw new IOException("does not say how long the video is");
        }
        return (long) microseconds;
    }

    private static String codecOf(HeifSource file, List<Box> movie) throws IOException {
        for (Box track : movie) {
            if (!track.type().equals("trak")) continue;
            List<Box> media = inside(file, Box.first(inside(file, track), "mdia"));
            if (!typeAt(file, Box.first(media, "hdlr"), kHandlerTypeAt).equals("vide")) continue;
            List<Box> samples = inside(file, Box.first(inside(file, Box.first(media, "minf")), "stbl"));
            return codecNamed(typeAt(file, Box.first(samples, "stsd"), kFirstEntryTypeAt));
        }
        throw new IOException("has no video track");
    }

    private static String codecNamed(String type) throws IOException {
        String codec = kCodecs.get(type);
        if (codec != null) return codec;
        String shown = type.chars().allMatch(c -> c > ' ' && c < 0x7f) ? type : "not named";
        throw new IOException("has a video track in a codec (" + shown + ") that viewers do not play");
    }

    private static List<Box> inside(HeifSource file, Box box) throws IOException {
        return box == null ? List.of() : BoxTree.list(file, box.payloadOffset(), box.end());
    }

    /** Four characters of a box's payload; empty when there is no box, or too small a one. */
    private static String typeAt(HeifSource file, Box box, int offset) throws IOException {
        if (box == null || box.payloadSize() < offset + 4) return "";
        return text(file.load(box.payloadOffset() + offset, 4));
    }

    private static String text(byte[] type) {
        return new String(type, StandardCharsets.ISO_8859_1);
    }
}
