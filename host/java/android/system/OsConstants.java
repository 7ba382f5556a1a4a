package android.system;

/** The system's numbers. As on a device, they are not compile-time constants: classes read them at run time. */
public final class OsConstants {
    static {
        System.loadLibrary("quillplatform");
    }

    public static final int F_GETFL = value(3);
    public static final int O_ACCMODE = value(3);
    public static final int O_RDONLY = value(0);
    public static final int O_WRONLY = value(1);
    public static final int SEEK_CUR = value(1);
    public static final int S_IFDIR = value(0040000);
    public static final int S_IFMT = value(0170000);
    public static final int S_IFREG = value(0100000);

    private OsConstants() {}

    public static boolean S_ISDIR(int mode) {
        return (mode & S_IFMT) == S_IFDIR;
    }

    public static boolean S_ISREG(int mode) {
        return (mode & S_IFMT) == S_IFREG;
    }

    /** The name of an error, e.g. "EBADF"; null for an unknown one. */
    public static native String errnoName(int errno);

    private static int value(int value) {
        return value;
    }
}
