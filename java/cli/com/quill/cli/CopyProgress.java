package com.quill.cli;

import com.quill.files.AtomicOutput;
import java.io.PrintWriter;

/** A line on the terminal while large files are copied behind a still, inside the library. */
final class CopyProgress {
    private static final long kWorthALine = 20_000_000;  // bytes; less is copied before anyone has read it
    private static final long kPeriodMillis = 100;
    private static final String kClearLine = "\r\033[K";

    private final PrintWriter mErr;
    private final boolean mTerminal;
    private Thread mWatcher;

    CopyProgress(PrintWriter err, boolean terminal) {
        mErr = err;
        mTerminal = terminal;
    }

    /** Shows how an output grows that gets {@code appended} bytes behind its still, until {@link #stop}. */
    void start(AtomicOutput output, long appended) {
        if (!mTerminal || appended < kWorthALine) return;
        mWatcher = new Thread(() -> watch(output, appended), "copy-progress");
        mWatcher.setDaemon(true);
        mWatcher.start();
    }

    void stop() {
        if (mWatcher == null) return;
        mWatcher.interrupt();
        try {
            mWatcher.join();
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    private void watch(AtomicOutput output, long appended) {
        try {
            while (true) {
                Thread.sleep(kPeriodMillis);
                mErr.print(kClearLine + output.size() / 1_000_000 + " MB written, of the still and "
                        + appended / 1_000_000 + " MB behind it");
                mErr.flush();
            }
        } catch (InterruptedException e) {
            mErr.print(kClearLine);
            mErr.flush();
        }
    }
}
