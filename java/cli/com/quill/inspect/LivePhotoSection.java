package com.quill.inspect;

import java.util.ArrayList;
import java.util.List;

/**
 * What follows the still in a live photo's file: a box of its own behind the others. Offset and size are those of the
 * payload, in bytes of the file.
 */
public record LivePhotoSection(Kind kind, long offset, long size) {
    /** In the order they stand in. */
    public enum Kind {
        VIDEO("mpvd", "video", "video.mp4"),
        GAIN_MAP("gain", "gain map", "gainmap.bin"),
        EXTENDER("qext", "extender", "extender.bin");

        final String mType;
        final String mName;
        final String mFile;

        Kind(String type, String name, String file) {
            mType = type;
            mName = name;
            mFile = file;
        }

        /** Of the box. */
        public String type() {
            return mType;
        }

        static Kind ofType(String type) {
            for (Kind kind : values()) {
                if (kind.mType.equals(type)) return kind;
            }
            return null;
        }
    }

    /** The sections among a file's outermost boxes, which tile the file to its end: from the first on nothing else. */
    static List<LivePhotoSection> among(List<Box> boxes, Problems problems) {
        List<LivePhotoSection> sections = new ArrayList<>();
        Kind last = null;
        for (Box box : boxes) {
            Kind kind = Kind.ofType(box.type());
            if (kind == null && last != null) {
                problems.add("the box '" + box.type() + "' at " + box.offset() + " stands behind the live photo's "
                        + last.mName);
            }
            if (kind == null) continue;
            boolean outOfOrder = last == null ? kind != Kind.VIDEO : kind.compareTo(last) <= 0;
            if (outOfOrder) problems.add("the live photo's " + kind.mName + " at " + box.offset() + " is out of place");
            sections.add(new LivePhotoSection(kind, box.payloadOffset(), box.payloadSize()));
            last = kind;
        }
        return sections;
    }
}
