package com.quill.cli;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Locale;
import java.util.concurrent.Callable;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.Spec;

/** {@code quill live}: a photograph and a video to a live photo. */
@Command(name = "live", sortOptions = false,
        description = "Writes a photograph (JPEG, PNG, TIFF) and a video (MP4, MOV) as a live photo: one HEIF file.",
        footer = {"", "Without -o it is written beside the photograph, as NAME.MP.heic. A file of that name is "
            + "replaced once the new one is whole; the files it is made of are never overwritten.", "",
            "Exit status: 0 when the live photo was written, 1 when it was not, 2 for wrong usage."})
final class LiveCommand implements Callable<Integer> {
    private static final String kEnding = ".MP.heic";  // by which galleries know a motion photo

    @Spec
    private CommandSpec mSpec;

    @Parameters(paramLabel = "PHOTO", description = "The photograph.")
    private Path mPhoto;

    @Option(names = "--video", paramLabel = "CLIP", required = true, description = "The video, below 2 GiB.")
    private Path mVideo;

    @Option(names = "--gainmap", paramLabel = "FILE", description = "A gain-map image to put behind the video.")
    private Path mGainmap;

    @Option(names = "--extender", paramLabel = "FILE", description = "Bytes to put at the end of the file.")
    private Path mExtender;

    @Option(names = "--xmp", paramLabel = "FILE",
            description = "XMP packet (UTF-8) in place of the one that is made for the video.")
    private Path mXmp;

    @Option(names = {"-o", "--output"}, paramLabel = "OUT.heic", description = "Output file.")
    private Path mOutput;

    @Option(names = "--force", description = "Takes any file for the video, unchecked.")
    private boolean mForce;

    @Mixin
    private PictureOptions mPicture;

    @Override
    public Integer call() {
        mPicture.checkOutput(mOutput);
        StillConversion conversion = mPicture.conversion();
        Path target = mOutput == null ? PlannedStill.targetOf(mPhoto, kEnding) : mOutput;
        PlannedStill planned = new PlannedStill(mPhoto, target);
        PrintWriter err = mSpec.commandLine().getErr();
        boolean terminal = Terminal.isStandardError();
        StillReport report = new StillReport(mSpec.commandLine().getOut(), err, 1, terminal);
        try {
            checkFiles(planned);
            LiveContent content =
                    new LiveContent(clip(), mGainmap, mExtender, mXmp, new CopyProgress(err, terminal));
            report.written(planned, conversion.write(conversion.load(mPhoto), target, content), remark(content.mClip));
            return 0;
        } catch (IOException | OutOfMemoryError | LinkageError | RuntimeException e) {
            mPicture.reportFailure(report, planned, e);
            return 1;
        }
    }

    private void checkFiles(PlannedStill planned) throws IOException {
        FailureText.checkInput(mPhoto);
        planned.checkTarget();
        planned.checkKept("photograph", mPhoto);
        checkSource(planned, "video", mVideo);
        checkSource(planned, "gain map", mGainmap);
        boolean noMap = mGainmap != null && Files.size(mGainmap) == 0;
        if (noMap) throw new IOException("the gain map " + mGainmap + " is empty");
        checkSource(planned, "extender", mExtender);
        checkSource(planned, "XMP packet", mXmp);
    }

    private static void checkSource(PlannedStill planned, String kind, Path source) throws IOException {
        if (source == null) return;
        try {
            FailureText.checkInput(source);
        } catch (IOException e) {
            throw new IOException("the " + kind + " " + source + ": " + e.getMessage(), e);
        }
        planned.checkKept(kind, source);
    }

    private Clip clip() throws IOException {
        if (mForce) return Clip.unchecked(mVideo);
        try {
            return Clip.read(mVideo);
        } catch (IOException e) {
            throw new IOException("the video " + mVideo + " " + FailureText.of(e) + "; --force takes it as it is", e);
        }
    }

    private String remark(Clip clip) {
        if (clip.mCodec == null) return "  with " + mVideo + ", unchecked";
        return String.format(Locale.ROOT, "  with %s, %.1f s %s", mVideo, clip.mDurationUs / 1e6, clip.mCodec);
    }
}
