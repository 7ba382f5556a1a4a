package com.quill.cli;

/** What a file says beside its pixels. */
interface Metadata {
    /** "Exif", 0, 0 and a TIFF structure, the caller's to change; null for none. */
    byte[] exif();

    /** The ICC profile, unchecked; null for none, or when the decoder sees to it. */
    byte[] profile();

    /** Adds what a still has no place for. */
    void addLosses(Losses losses);
}
