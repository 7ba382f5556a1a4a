package com.quill.cli;

/** What is done to a stored picture so that it is seen upright: mirrored first, then turned clockwise. */
final class Orientation {
    private static final boolean[] kMirrored = {false, true, false, true, true, false, true, false};
    private static final int[] kRotation = {0, 0, 180, 180, 270, 90, 90, 270};

    final boolean mMirrored;
    final int mRotation;  // degrees clockwise

    private Orientation(boolean mirrored, int rotation) {
        mMirrored = mirrored;
        mRotation = rotation;
    }

    /** For the orientation that TIFF and EXIF write as 1 to 8. */
    static Orientation ofTiff(int value) {
        return new Orientation(kMirrored[value - 1], kRotation[value - 1]);
    }

    static Orientation ofRotation(int degrees) {
        return new Orientation(false, degrees);
    }
}
