package com.quill.cli;

import java.io.PrintWriter;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;

/** What the user sees while stills are written: a line each, and over many a progress bar on a terminal. */
final class StillReport {
    private static final int kBarWidth = 30;
    private static final String kClearLine = "\r\033[K";

    private final PrintWriter mOut;
    private final PrintWriter mErr;
    private final int mTotal;
    private final boolean mShowsBar;
    private final List<String> mFailures = new ArrayList<>();
    private int mDone;

    StillReport(PrintWriter out, PrintWriter err, int total, boolean terminal) {
        mOut = out;
        mErr = err;
        mTotal = total;
        mShowsBar = terminal && total > 1;
        drawBar();
    }

    void written(PlannedStill still, StillConversion.Result result) {
        written(still, result, "");
    }

    /** With a remark at the end of the line. */
    void written(PlannedStill still, StillConversion.Result result, String remark) {
        clearBar();
        String line = String.format(Locale.ROOT, "%s -> %s  %dx%d  %s  %s  %.1f s%s", still.mPhoto, still.mTarget,
                result.mLayout.width(), result.mLayout.height(), StillConversion.nameOf(result.mLayout.format()),
                sizeText(result.mBytes), result.mNanos / 1e9, remark);
        mOut.println(FailureText.line(line));
        mOut.flush();
        String losses = result.mLosses.toString();
        if (!losses.isEmpty()) say(FailureText.line(still.mPhoto + ": " + losses));
        step();
    }

    void failed(Path photo, String why) {
        clearBar();
        String line = FailureText.line(photo + ": " + why);
        mFailures.add(line);
        say(line);
        step();
    }

    /** After many: what has failed, once more and in one place. */
    void summarize(int skipped) {
        if (skipped > 0) mOut.println(skipped + " skipped: their stills are there");
        mOut.flush();
        if (mTotal < 2 || mFailures.isEmpty()) return;
        say(mFailures.size() + " of " + mTotal + " not written:");
        for (String failure : mFailures) mErr.println("  " + failure);
        mErr.flush();
    }

    private void say(String line) {
        mErr.println("quill: " + line);
        mErr.flush();
    }

    private void step() {
        ++mDone;
        if (mDone < mTotal) drawBar();
    }

    private void drawBar() {
        if (!mShowsBar) return;
        int full = kBarWidth * mDone / mTotal;
        mErr.print("[" + "#".repeat(full) + " ".repeat(kBarWidth - full) + "] " + mDone + "/" + mTotal);
        mErr.flush();
    }

    private void clearBar() {
        if (!mShowsBar) return;
        mErr.print(kClearLine);
        mErr.flush();
    }

    private static String sizeText(long bytes) {
        if (bytes < 100_000) return String.format(Locale.ROOT, "%.1f kB", bytes / 1e3);
        return String.format(Locale.ROOT, "%.1f MB", bytes / 1e6);
    }
}
