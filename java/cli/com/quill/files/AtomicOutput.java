package com.quill.files;

import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.HashSet;
import java.util.Set;
import java.util.concurrent.ThreadLocalRandom;

/**
 * A file that appears under its name only when it is whole. It grows under another name in the same folder, which goes
 * away on close, and when the process is interrupted.
 */
public final class AtomicOutput implements AutoCloseable {
    private static final int kProbeBytes = 1 << 20;

    private static final Set<Path> gUnfinished = new HashSet<>();
    private static boolean gInterrupted;

    static {
        Runtime.getRuntime().addShutdownHook(new Thread(AtomicOutput::removeUnfinished));
    }

    /** Throws when the file at a path is not whole. */
    public interface Check {
        void check(Path file) throws IOException;
    }

    private final Path mTarget;
    private final Path mGrowing;
    private final RandomAccessFile mFile;

    /** A file that grows beside {@code target}. */
    public AtomicOutput(Path target) throws IOException {
        mTarget = target;
        mGrowing = createBeside(target);
        mFile = new RandomAccessFile(mGrowing.toFile(), "rw");
    }

    /** Open for reading and writing at offset 0. */
    public FileDescriptor descriptor() throws IOException {
        return mFile.getFD();
    }

    /** The file under its name so far, to be written by this name. */
    public Path growing() {
        return mGrowing;
    }

    /** Bytes written so far; callable from any thread. 0 once the file is closed. */
    public long size() {
        return mGrowing.toFile().length();
    }

    /**
     * Why the file cannot take {@code bytes}, or null when it can or is closed already; spoils what was written. What
     * failed for want of room has been taken back by then, so asking for less tells nothing.
     */
    public String whyFull(long bytes) {
        if (!mFile.getChannel().isOpen()) return null;
        byte[] probe = new byte[kProbeBytes];
        try {
            mFile.setLength(0);
            for (long done = 0; done < bytes; done += probe.length) {
                mFile.write(probe, 0, (int) Math.min(probe.length, bytes - done));
            }
            mFile.getFD().sync();
            return null;
        } catch (IOException e) {
            return e.getMessage();
        }
    }

    /**
     * Brings the data to the disk, checks the file, dates it like {@code source} unless that is null, and gives it its
     * name, replacing a file that has it already.
     */
    public void publish(Check check, Path source) throws IOException {
        mFile.getFD().sync();
        check.check(mGrowing);
        mFile.close();
        if (source != null) Files.setLastModifiedTime(mGrowing, Files.getLastModifiedTime(source));
        Files.move(mGrowing, mTarget, StandardCopyOption.ATOMIC_MOVE);
        forget(mGrowing);
    }

    @Override
    public void close() throws IOException {
        mFile.close();
        if (forget(mGrowing)) Files.deleteIfExists(mGrowing);
    }

    private static synchronized Path createBeside(Path target) throws IOException {
        if (gInterrupted) throw new IOException("interrupted");
        String unique = Long.toString(ThreadLocalRandom.current().nextLong(Long.MAX_VALUE), Character.MAX_RADIX);
        Path path = target.resolveSibling("." + unique + ".heic.part");
        Files.createFile(path);  // fails when it exists; the usual permissions
        gUnfinished.add(path);
        return path;
    }

    private static synchronized boolean forget(Path path) {
        return gUnfinished.remove(path);
    }

    private static synchronized void removeUnfinished() {
        gInterrupted = true;
        for (Path path : gUnfinished) {
            path.toFile().delete();
        }
    }
}
