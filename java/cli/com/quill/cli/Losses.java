package com.quill.cli;

import java.util.LinkedHashSet;
import java.util.Set;

/** What a photograph holds and its still does not, or not as it was: each kind once, in the order met. */
final class Losses {
    static final String kXmp = "XMP";
    static final String kIptc = "IPTC";
    static final String kMorePictures = "further pictures in the file";

    private final Set<String> mKinds = new LinkedHashSet<>();

    void add(String kind) {
        mKinds.add(kind);
    }

    Set<String> kinds() {
        return mKinds;
    }

    boolean isEmpty() {
        return mKinds.isEmpty();
    }

    /** One line for the user. */
    @Override
    public String toString() {
        return String.join(", ", mKinds);
    }
}
