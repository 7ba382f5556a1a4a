package com.quill.inspect;

import java.io.IOException;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.Set;

/** Finds the boxes of a file (ISO/IEC 14496-12). Their payloads are not read, except for the sizes of the boxes inside. */
public final class BoxTree {
    private static final int kHeaderSize = 8;
    private static final int kLargeHeaderSize = 16;
    private static final int kSizeUpToTheEnd = 0;
    private static final int kSizeFollowsType = 1;

    private static final int kMaxBoxes = 1 << 17;  // two per item in a file with as many items as 16 bits number
    private static final int kMaxDepth = 16;

    // Boxes that hold boxes, and how many bytes stand before the first: version and flags, counts.
    private static final Map<String, Integer> kContainers = Map.ofEntries(Map.entry("meta", 4), Map.entry("iprp", 0),
            Map.entry("ipco", 0), Map.entry("iinf", 6), Map.entry("iref", 4), Map.entry("dinf", 0),
            Map.entry("dref", 8), Map.entry("grpl", 0), Map.entry("moov", 0), Map.entry("trak", 0),
            Map.entry("edts", 0), Map.entry("mdia", 0), Map.entry("minf", 0), Map.entry("stbl", 0),
            Map.entry("stsd", 8), Map.entry("udta", 0));
    // The types of these boxes' children name something else: references, properties, sample formats.
    private static final Set<String> kParentsOfLeaves = Set.of("iref", "ipco", "dref", "grpl", "stsd", "iinf");
    private static final int kWideCountExtra = 2;  // 'iinf' counts in 32 bits from version 1 on

    private final HeifSource mSource;
    private final Problems mProblems;
    private int mCount;

    private BoxTree(HeifSource source, Problems problems) {
        mSource = source;
        mProblems = problems;
    }

    static List<Box> read(HeifSource source, Problems problems) throws IOException {
        return new BoxTree(source, problems).readBoxes(0, source.size(), 0, "the file");
    }

    /**
     * The boxes that fill {@code start} to {@code end}, without what is in them. A FormatException when they do not: one
     * is cut short, or smaller than its own header.
     */
    public static List<Box> list(HeifSource source, long start, long end) throws IOException {
        Problems problems = new Problems();
        List<Box> boxes = new BoxTree(source, problems).readBoxes(start, end, kMaxDepth, "the file");
        if (!problems.messages().isEmpty()) throw new FormatException(problems.messages().get(0));
        return boxes;
    }

    private List<Box> readBoxes(long start, long end, int depth, String parent) throws IOException {
        List<Box> boxes = new ArrayList<>();
        for (long at = start; at < end; ) {
            if (mCount == kMaxBoxes) {
                mProblems.add("the boxes from offset " + at + " on are left out: there are more than " + kMaxBoxes);
                mCount++;
            }
            if (mCount > kMaxBoxes) return boxes;
            Box box = readBox(at, end, depth, parent);
            if (box == null) {
                mProblems.add("the " + (end - at) + " bytes at " + at + ", in " + parent + ", are no box");
                return boxes;
            }
            boxes.add(box);
            at = box.end();
        }
        return boxes;
    }

    /** The box at {@code at}, or null when there is none. */
    private Box readBox(long at, long end, int depth, String parent) throws IOException {
        if (end - at < kHeaderSize) return null;
        ByteReader header = new ByteReader(mSource.load(at, Math.min(kLargeHeaderSize, end - at)));
        long size = header.u32();
        String type = header.fourCc();
        if (!type.chars().allMatch(letter -> letter >= ' ' && letter <= '~')) return null;
        boolean large = size == kSizeFollowsType;
        if (large && header.remaining() < 8) return null;
        int headerSize = large ? kLargeHeaderSize : kHeaderSize;
        if (large) size = header.raw64();
        if (size == kSizeUpToTheEnd && !large) size = end - at;
        if (size >= 0 && size < headerSize) return null;
        if (size < 0 || size > end - at) {
            mProblems.add("the box '" + type + "' at " + at + " is cut short: " + Long.toUnsignedString(size)
                    + " bytes, of which " + (end - at) + " are there");
            size = end - at;
        }
        ++mCount;
        return new Box(type, at, size, headerSize, readChildren(type, at + headerSize, at + size, depth, parent));
    }

    private List<Box> readChildren(String type, long payload, long end, int depth, String parent) throws IOException {
        Integer prefix = kContainers.get(type);
        if (prefix == null || kParentsOfLeaves.contains(parent) || depth == kMaxDepth) return List.of();
        long start = payload + prefix;
        boolean wide = type.equals("iinf") && payload < end && mSource.load(payload, 1)[0] != 0;
        if (wide) start += kWideCountExtra;
        if (start > end) {
            mProblems.add("the box '" + type + "' ends too early");
            return List.of();
        }
        return readBoxes(start, end, depth + 1, type);
    }
}
