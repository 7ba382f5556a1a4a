package com.quill.cli;

import com.quill.host.Workstation;
import com.quill.media.FrameLayout;

/**
 * x265's presets, which trade time for size. The library waits ten seconds for its encoder, as long as a device's may
 * take; a workstation's takes minutes for a large picture, so the clock is slowed down for it.
 */
enum EncoderPreset {
    ultrafast(1),
    superfast(2),
    veryfast(2),
    faster(3),
    fast(3),
    medium(3),
    slow(4),
    slower(6),
    veryslow(6),
    placebo(10);

    private static final String kProperty = "debug.quill.host.x265.preset";
    private static final double kLibraryWaits = 10;    // seconds
    private static final double kSmallPixels = 3.2e6;  // up to here the workstation's device takes a slow preset
    private static final double kSpare = 5;            // for slow and busy processors

    // Of one core, at quality 100, where it takes longest.
    private final double mSecondsPerMegapixel;

    EncoderPreset(double secondsPerMegapixel) {
        mSecondsPerMegapixel = secondsPerMegapixel;
    }

    /** Readies the workstation for a still, null being its own choice; returns the seconds that the library then waits. */
    static double prepare(EncoderPreset preset, FrameLayout layout) {
        double pixels = (double) layout.width() * layout.height();
        EncoderPreset slowest = preset != null ? preset : pixels <= kSmallPixels ? slow : ultrafast;
        double seconds = pixels / 1e6 * slowest.mSecondsPerMegapixel;
        double waits = Math.max(kLibraryWaits, kSpare * seconds);
        Workstation.stretchClock(waits / kLibraryWaits);
        if (preset != null) Workstation.setProperty(kProperty, preset.name());
        return waits;
    }
}
