package com.quill.cli;

import java.util.LinkedHashSet;
import java.util.Set;

/**
 * What a photograph holds and its still does not, or not as it was: each kind once, in the order met. And whatever else
 * the user should know of the two.
 */
final class Losses {
    static final String kXmp = "XMP";
    static final String kIptc = "IPTC";
    static final String kMorePictures = "further pictures in the file";

    private final Set<String> mKinds = new LinkedHashSet<>();
    private final Set<String> mNotes = new LinkedHashSet<>();

    void add(String kind) {
        mKinds.add(kind);
    }

    /** A sentence of its own. */
    void note(String note) {
        mNotes.add(note);
    }

    Set<String> kinds() {
        return mKinds;
    }

    /** One line for the user; empty when there is nothing to say. */
    @Override
    public String toString() {
        Set<String> parts = new LinkedHashSet<>(mNotes);
        if (!mKinds.isEmpty()) parts.add("not kept: " + String.join(", ", mKinds));
        return String.join("; ", parts);
    }
}
