package android.system;

import java.io.FileDescriptor;
import java.io.InterruptedIOException;

/** System calls. Interrupting a thread does not end a call, and the interrupt stays pending. */
public final class Os {
    static {
        System.loadLibrary("quillplatform");
    }

    private Os() {}

    public static int fcntlInt(FileDescriptor fd, int cmd, int arg) throws ErrnoException {
        return (int) checked("fcntl", fcntl(fd, cmd, arg));
    }

    public static StructStat fstat(FileDescriptor fd) throws ErrnoException {
        long[] of = new long[13];
        checked("fstat", stat(fd, of));
        return new StructStat(of[0], of[1], (int) of[2], of[3], (int) of[4], (int) of[5], of[6], of[7], of[8], of[9],
                of[10], of[11], of[12]);
    }

    public static long lseek(FileDescriptor fd, long offset, int whence) throws ErrnoException {
        return checked("lseek", seek(fd, offset, whence));
    }

    public static int pread(FileDescriptor fd, byte[] bytes, int byteOffset, int byteCount, long offset)
            throws ErrnoException, InterruptedIOException {
        if ((byteOffset | byteCount) < 0 || byteOffset > bytes.length - byteCount) {
            throw new ArrayIndexOutOfBoundsException("no " + byteCount + " bytes from " + byteOffset);
        }
        return (int) checked("pread", read(fd, bytes, byteOffset, byteCount, offset));
    }

    public static native String strerror(int errno);

    private static long checked(String function, long result) throws ErrnoException {
        if (result < 0) throw new ErrnoException(function, (int) -result);
        return result;
    }

    // The result of the call, or its error as a negative number.
    private static native long fcntl(FileDescriptor fd, int cmd, int arg);

    private static native long stat(FileDescriptor fd, long[] fields);

    private static native long seek(FileDescriptor fd, long offset, int whence);

    private static native long read(FileDescriptor fd, byte[] bytes, int byteOffset, int byteCount, long offset);
}
