package com.quill.media;

import android.system.ErrnoException;
import android.system.Os;
import android.system.OsConstants;
import com.quill.media.HeifWriteException.Content;
import java.io.FileDescriptor;
import java.io.InterruptedIOException;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.HashSet;
import java.util.List;
import java.util.Set;

/** The file that a photo goes to: empty before, read back afterwards by its outermost boxes (ISO/IEC 14496-12). */
final class OutputFile extends OpenFile {
    private static final int kHeaderBytes = 8;
    private static final int kLargeHeaderBytes = 16;
    private static final long kWholeRest = 0;    // in place of a box's size: the rest of the file
    private static final long kSizeFollows = 1;  // the same: a size of 64 bits
    private static final List<String> kStillBoxes = Arrays.asList("ftyp", "meta", "mdat");
    private static final List<String> kSections = Arrays.asList("mpvd", "gain", "qext");
    private static final long kNoStill = -1;

    /** Throws unless a photo can be written to {@code fd}. */
    OutputFile(FileDescriptor fd) throws HeifWriteException {
        super(fd, "fd");
        require(isWritable(), "is not open for writing");
        require(size() == 0, "is not an empty file");
        try {
            require(Os.lseek(fd, 0, OsConstants.SEEK_CUR) == 0, "does not stand at its file's start");
        } catch (ErrnoException e) {
            throw HeifWriteException.refused("fd: " + e.getMessage(), e);
        }
    }

    /**
     * Throws unless the file now holds a still and {@code sectionBytes} behind it. Of a still in a file that is open
     * for writing only, the native writer's word is taken.
     *
     * @param text what the native writer said of which photo
     * @param succeeded whether it reported success
     */
    void requireWhole(String text, boolean succeeded, long sectionBytes) throws HeifWriteException {
        try {
            long bytes = Os.fstat(mFd).st_size;
            long behindStill = isReadable() && bytes > 0 ? bytesBehindStill(bytes) : kNoStill;
            if (succeeded && (isReadable() ? behindStill == sectionBytes : bytes > 0)) return;
            throw new HeifWriteException(text + ". " + describe(bytes, behindStill, sectionBytes),
                    contentOf(bytes, behindStill), null);
        } catch (ErrnoException | InterruptedIOException e) {
            throw new HeifWriteException(text + ". The file cannot be read back: " + e.getMessage(), Content.DAMAGED,
                    e);
        }
    }

    private static Content contentOf(long bytes, long behindStill) {
        if (bytes == 0) return Content.UNCHANGED;
        return behindStill == kNoStill ? Content.DAMAGED : Content.STILL;
    }

    private String describe(long bytes, long behindStill, long sectionBytes) {
        if (bytes == 0) return "The file is as it was";
        if (!isReadable()) return "The file has " + bytes + " bytes, and is not open for reading to see whose";
        if (behindStill == kNoStill) return "The file has " + bytes + " bytes, but no whole still";
        return "The file has a whole still" + (sectionBytes == 0 ? "" : " and " + behindStill + " of " + sectionBytes
                + " bytes behind it");
    }

    /** What lies between the end of the still and {@code end}, the file's. */
    private long bytesBehindStill(long end) throws ErrnoException, InterruptedIOException {
        Set<String> found = new HashSet<>();
        long at = 0;
        while (at < end) {
            ByteBuffer header = headerAt(at);
            if (header.remaining() < kHeaderBytes) return kNoStill;
            long size = header.getInt() & 0xFFFFFFFFL;
            String type = new String(header.array(), 4, 4, StandardCharsets.ISO_8859_1);
            if (kSections.contains(type)) break;
            if (size == kSizeFollows && header.limit() == kLargeHeaderBytes) size = header.getLong(kHeaderBytes);
            if (size == kWholeRest) size = end - at;
            if (size < kHeaderBytes || size > end - at) return kNoStill;
            found.add(type);
            at += size;
        }
        return found.containsAll(kStillBoxes) ? end - at : kNoStill;
    }

    private ByteBuffer headerAt(long offset) throws ErrnoException, InterruptedIOException {
        byte[] header = new byte[kLargeHeaderBytes];
        int count = 0;
        while (count < header.length) {
            int read = Os.pread(mFd, header, count, header.length - count, offset + count);
            if (read == 0) break;
            count += read;
        }
        return ByteBuffer.wrap(header, 0, count);
    }
}
