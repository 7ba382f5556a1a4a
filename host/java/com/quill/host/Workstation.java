package com.quill.host;

/** What a program can change about the workstation's stand-in of a platform. A device has no such class. */
public final class Workstation {
    static {
        System.loadLibrary("quillplatform");
    }

    private Workstation() {}

    /**
     * Makes every wait {@code factor} times as long from now on: the codec's, and the library's own. 1 is real time.
     */
    public static native void stretchClock(double factor);

    /** Sets a system property of this process; false when it is not one. */
    public static native boolean setProperty(String key, String value);
}
