package com.quill.cli;

import java.io.IOException;
import java.util.List;
import java.util.concurrent.ExecutionException;
import java.util.concurrent.FutureTask;

/**
 * Frames in order, the next of which is made while its user works on the present one. At most two are in memory, and
 * beside a large one none is begun.
 */
final class DecodeAhead {
    private static final int kLargeShare = 8;  // of the memory

    /** Makes the frame of a still; an IOException says why it cannot. */
    interface Decoder {
        StillConversion.Frame decode(PlannedStill still) throws IOException;
    }

    private final List<PlannedStill> mStills;
    private final Decoder mDecoder;
    private int mNext;
    private FutureTask<StillConversion.Frame> mBegun;  // null: the next one is not begun

    DecodeAhead(List<PlannedStill> stills, Decoder decoder) {
        mStills = stills;
        mDecoder = decoder;
    }

    /** The next still's frame, or an exception that says why not; the one after it is begun. */
    StillConversion.Frame next() throws IOException {
        PlannedStill still = mStills.get(mNext++);
        FutureTask<StillConversion.Frame> begun = mBegun;
        mBegun = null;
        StillConversion.Frame frame = begun == null ? mDecoder.decode(still) : finished(begun, still);
        boolean large = frame.mPixels.length > Runtime.getRuntime().maxMemory() / kLargeShare;
        if (!large && mNext < mStills.size()) begin(mStills.get(mNext));
        return frame;
    }

    private void begin(PlannedStill still) {
        mBegun = new FutureTask<>(() -> mDecoder.decode(still));
        Thread thread = new Thread(mBegun, "decode-ahead");
        thread.setDaemon(true);
        thread.start();
    }

    private StillConversion.Frame finished(FutureTask<StillConversion.Frame> begun, PlannedStill still)
            throws IOException {
        try {
            return begun.get();
        } catch (InterruptedException e) {
            throw new IOException("interrupted", e);
        } catch (ExecutionException e) {
            Throwable cause = e.getCause();
            if (cause instanceof OutOfMemoryError) return mDecoder.decode(still);  // alone it may fit
            if (cause instanceof IOException) throw (IOException) cause;
            if (cause instanceof RuntimeException) throw (RuntimeException) cause;
            throw (Error) cause;
        }
    }
}
