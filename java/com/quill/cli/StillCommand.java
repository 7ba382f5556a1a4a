package com.quill.cli;

import com.quill.media.ColorFormat;
import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.AccessDeniedException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine.Command;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.ParameterException;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.Spec;

/** {@code quill still}: photographs to HEIF stills. */
@Command(name = "still", sortOptions = false, description = "Writes photographs (JPEG, PNG) as HEIF stills.",
        footer = {"", "Without -o and -d a still is written beside its photograph, as NAME.heic. A file of that name "
            + "is replaced once the new one is whole; a photograph is never overwritten.", "",
            "Exit status: 0 when every still was written, 1 when one was not, 2 for wrong usage."})
final class StillCommand implements Callable<Integer> {
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

    @Spec
    private CommandSpec mSpec;

    @Parameters(paramLabel = "PHOTO", arity = "1..*", description = "Photographs to write as stills.")
    private List<Path> mPhotos;

    @Option(names = {"-o", "--output"}, paramLabel = "OUT.heic", description = "Output file, for a single photograph.")
    private Path mOutput;

    @Option(names = {"-d", "--directory"}, paramLabel = "DIR",
            description = "Folder for the outputs; made when it is missing.")
    private Path mDirectory;

    @Option(names = {"-q", "--quality"}, paramLabel = "0-100", defaultValue = "95",
            description = "Quality of the picture (default: ${DEFAULT-VALUE}).")
    private int mQuality;

    @Option(names = "--format", paramLabel = "FORMAT",
            description = "Camera frame format given to the library: ${COMPLETION-CANDIDATES} (default: nv12; rgba for "
                    + "an odd width, whose last column the others color wrongly). p010 gives a 10-bit still.")
    private FrameFormat mFormat;

    @Option(names = "--rotation", paramLabel = "DEGREES", defaultValue = "auto",
            description = "Clockwise turn for viewing: auto (from the EXIF block), 0, 90, 180 or 270 "
                    + "(default: ${DEFAULT-VALUE}).")
    private String mRotation;

    @Option(names = "--verbose", description = "Shows the library's log, and details of failures.")
    private boolean mVerbose;

    @Option(names = {"-h", "--help"}, usageHelp = true, description = "Shows this help.")
    private boolean mHelp;

    @Override
    public Integer call() {
        StillConversion conversion = new StillConversion(
                mFormat == null ? null : mFormat.mFormat, checkedQuality(), checkedRotation());
        List<PlannedStill> planned = plan();
        PrintWriter err = mSpec.commandLine().getErr();
        StillReport report =
                new StillReport(mSpec.commandLine().getOut(), err, planned.size(), Terminal.isStandardError());
        int written = 0;
        for (PlannedStill still : planned) {
            if (write(still, planned, conversion, report)) ++written;
        }
        return written == planned.size() ? 0 : 1;
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
                throw usage("the rotation " + mRotation + " is none of auto, 0, 90, 180, 270");
        }
    }

    private List<PlannedStill> plan() {
        if (mOutput != null && mDirectory != null) throw usage("-o and -d exclude each other");
        if (mOutput != null && mPhotos.size() > 1) throw usage("-o names one file; use -d for several photographs");
        if (mOutput != null) return List.of(new PlannedStill(mPhotos.get(0), mOutput));
        try {
            return PlannedStill.forAll(mPhotos, mDirectory);
        } catch (IllegalArgumentException e) {
            throw usage(e.getMessage());
        }
    }

    private ParameterException usage(String message) {
        return new ParameterException(mSpec.commandLine(), message);
    }

    private boolean write(PlannedStill still, List<PlannedStill> all, StillConversion conversion, StillReport report) {
        try {
            checkPhoto(still.mPhoto);
            if (mDirectory != null) makeDirectory();
            still.checkTarget(all);
            report.written(still, conversion.run(still.mPhoto, still.mTarget));
            return true;
        } catch (IOException e) {
            report.failed(still.mPhoto, describe(e));
            showDetails(e);
        } catch (OutOfMemoryError e) {
            report.failed(still.mPhoto, "there is not enough memory for the picture");
            showDetails(e);
        } catch (LinkageError e) {
            report.failed(still.mPhoto, "the native library cannot be used: " + e.getMessage());
            showDetails(e);
        } catch (RuntimeException e) {  // one bad photograph must not keep the others from being written
            report.failed(still.mPhoto, "failed unexpectedly: " + e);
            showDetails(e);
        }
        return false;
    }

    private static void checkPhoto(Path photo) throws IOException {
        if (!Files.exists(photo)) throw new IOException("there is no such file");
        if (Files.isDirectory(photo)) throw new IOException("is a directory");
        if (!Files.isRegularFile(photo)) throw new IOException("is not a regular file");  // a pipe would block
    }

    private void makeDirectory() throws IOException {
        try {
            Files.createDirectories(mDirectory);
        } catch (IOException e) {
            throw new IOException("the folder " + mDirectory + " cannot be made: " + describe(e), e);
        }
    }

    private static String describe(IOException e) {
        if (e instanceof NoSuchFileException) return "there is no file " + e.getMessage();
        if (e instanceof AccessDeniedException) return "access to " + e.getMessage() + " is denied";
        if (e instanceof FileSystemException) {
            FileSystemException failure = (FileSystemException) e;
            return failure.getFile() + ": " + (failure.getReason() == null ? "cannot be used" : failure.getReason());
        }
        return e.getMessage() == null ? e.toString() : e.getMessage();
    }

    private void showDetails(Throwable e) {
        if (mVerbose) e.printStackTrace(mSpec.commandLine().getErr());
    }
}
