package com.quill.cli;

import com.quill.media.ColorFormat;
import java.nio.file.Path;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.Spec;

/** What every command that encodes photographs can be told, as a part of its options. */
final class PictureOptions {
    private static final int kMaxQuality = 100;

    /** Frame formats by the names they have on the command line. */
    enum FrameFormat {
        i420(ColorFormat.I420),
        p010(ColorFormat.P010),
        rgba(ColorFormat.RGBA8888),
        nv12(ColorFormat.NV12),
        nv21(ColorFormat.NV21);

        final ColorFormat mFormat;

        FrameFormat(ColorFormat format) {
            mFormat = format;
        }
    }

    @Spec(Spec.Target.MIXEE)
    private CommandSpec mCommand;

    @Option(names = {"-q", "--quality"}, paramLabel = "0-100", defaultValue = "95",
            description = "Quality of the picture (default: ${DEFAULT-VALUE}).")
    private int mQuality;

    @Option(names = "--format", paramLabel = "FORMAT",
            description = "Camera frame format given to the library: ${COMPLETION-CANDIDATES} (default: i420; rgba for "
                    + "an odd width or height, which the others do not take). p010 gives a 10-bit still.")
    private FrameFormat mFormat;

    @Option(names = "--rotation", paramLabel = "DEGREES", defaultValue = "auto",
            description = "Clockwise turn for viewing: auto (from the EXIF block), 0, 90, 180 or 270 "
                    + "(default: ${DEFAULT-VALUE}).")
    private String mRotation;

    @Option(names = "--preset", paramLabel = "PRESET",
            description = "x265's preset, from large files in little time to small ones in much: "
                    + "${COMPLETION-CANDIDATES} (default: by size, ultrafast above 3 megapixels).")
    private EncoderPreset mPreset;

    @Option(names = "--verbose", description = "Shows the library's log, and details of failures.")
    private boolean mVerbose;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Shows this help.")
    private boolean mHelp;

    /** As the options say; a ParameterException says which of them cannot be. */
    StillConversion conversion() {
        return new StillConversion(mFormat == null ? null : mFormat.mFormat, checkedQuality(), checkedRotation(), mPreset);
    }

    /** Refuses the standard output, which others write by this name. */
    void checkOutput(Path output) {
        boolean standard = output != null && output.toString().equals("-");
        if (standard) throw usage("'-o -': a still is read back when it is written, so it needs a file, not a stream");
    }

    /** Reports one photograph's failure, in detail when that is wanted. */
    void reportFailure(StillReport report, PlannedStill still, Throwable failure) {
        report.failed(still.mPhoto, FailureText.of(failure));
        if (mVerbose) failure.printStackTrace(mCommand.commandLine().getErr());
    }

    ParameterException usage(String message) {
        return new ParameterException(mCommand.commandLine(), message);
    }

    private int checkedQuality() {
        if (mQuality >= 0 && mQuality <= kMaxQuality) return mQuality;
        throw usage("the quality " + mQuality + " is not within 0 to " + kMaxQuality);
    }

    private int checkedRotation() {
        switch (mRotation) {
            case "auto":
                return StillConversion.kAutomaticRotation;
            case "0":
            case "90":
            case "180":
            case "270":
                return Integer.parseInt(mRotation);
            default:
                throw usage("the rotation " + mRotation + " is not auto, 0, 90, 180 or 270");
        }
    }
}
