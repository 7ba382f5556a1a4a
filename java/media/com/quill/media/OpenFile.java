package com.quill.media;

import android.system.ErrnoException;
import android.system.Os;
import android.system.OsConstants;
import android.system.StructStat;
import java.io.FileDescriptor;
import java.util.Objects;

/**
 * An open file of the app's as it was found. System calls only: a stream or a channel would take the descriptor over,
 * and close it when it is collected or its thread interrupted.
 */
class OpenFile {
    final FileDescriptor mFd;
    private final String mName;
    private final StructStat mStat;
    private final int mAccess;

    /** {@code name} is what messages call the file. Throws unless it is a regular one. */
    OpenFile(FileDescriptor fd, String name) throws HeifWriteException {
        mFd = Objects.requireNonNull(fd, name);
        mName = name;
        if (!fd.valid()) throw new IllegalArgumentException(name + " is not an open file");
        try {
            mStat = Os.fstat(fd);
            mAccess = Os.fcntlInt(fd, OsConstants.F_GETFL, 0) & OsConstants.O_ACCMODE;
        } catch (ErrnoException e) {
            throw HeifWriteException.refused(name + ": " + e.getMessage(), e);
        }
        require(!OsConstants.S_ISDIR(mStat.st_mode), "is a directory");
        require(OsConstants.S_ISREG(mStat.st_mode), "is not a regular file");
    }

    /** Throws "NAME problem" unless {@code holds}. */
    final void require(boolean holds, String problem) throws HeifWriteException {
        if (!holds) throw HeifWriteException.refused(mName + " " + problem, null);
    }

    final boolean isReadable() {
        return mAccess != OsConstants.O_WRONLY;
    }

    final boolean isWritable() {
        return mAccess != OsConstants.O_RDONLY;
    }

    final long size() {
        return mStat.st_size;
    }

    final boolean isSameFileAs(OpenFile other) {
        return mStat.st_dev == other.mStat.st_dev && mStat.st_ino == other.mStat.st_ino;
    }
}
