package com.quill.media;

import java.io.IOException;

/** A photo was not written, or not all of it. {@link #content} says what is in the file now. */
public final class HeifWriteException extends IOException {
    private static final long serialVersionUID = 1;

    /** What the call added to the file. */
    private final Content mContent;

    /** What is in the output file behind what it held before the call. */
    public enum Content {
        /** Nothing: the file is as it was. */
        UNCHANGED,
        /** A whole still, which opens by itself. A live photo's sections behind it are missing or cut short. */
        STILL,
        /**
         * Something that is not known to be a whole still: a part of one, sections without one, or anything when the
         * descriptor is not open for reading.
         */
        DAMAGED
    }

    HeifWriteException(String message, Content content, Throwable cause) {
        super(message, cause);
        mContent = content;
    }

    /** An argument that was refused before anything was written; the writer can still be used. */
    static HeifWriteException refused(String message, Throwable cause) {
        return new HeifWriteException(message + "; nothing was written", Content.UNCHANGED, cause);
    }

    /**
     * What is in the file now.
     *
     * @return what the call added to the file
     */
    public Content content() {
        return mContent;
    }
}
