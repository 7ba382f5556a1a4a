package android.system;

/** A system call that failed. */
public final class ErrnoException extends Exception {
    private static final long serialVersionUID = 1;

    /** The error, one of {@link OsConstants}. */
    public final int errno;

    private final String mFunction;

    public ErrnoException(String functionName, int errno) {
        this.mFunction = functionName;
        this.errno = errno;
    }

    @Override
    public String getMessage() {
        return mFunction + " failed: " + OsConstants.errnoName(errno) + " (" + Os.strerror(errno) + ")";
    }
}
