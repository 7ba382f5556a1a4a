package com.quill.inspect;

import java.util.List;

/** Item ids for people: "1-35, 38". */
final class IdRanges {
    private static final int kMaxRanges = 16;

    private IdRanges() {}

    static String text(List<Long> ids) {
        StringBuilder text = new StringBuilder();
        int ranges = 0;
        for (int first = 0; first < ids.size(); ) {
            if (++ranges > kMaxRanges) return text + ", ... (" + ids.size() + " in all)";
            int last = first;
            while (last + 1 < ids.size() && ids.get(last + 1) == ids.get(last) + 1) ++last;
            text.append(first == 0 ? "" : ", ").append(ids.get(first));
            if (last > first) text.append('-').append(ids.get(last));
            first = last + 1;
        }
        return text.toString();
    }
}
