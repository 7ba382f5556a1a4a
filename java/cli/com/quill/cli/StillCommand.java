package com.quill.cli;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.Callable;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.Spec;

/** {@code quill still}: photographs to HEIF stills. */
@Command(name = "still", sortOptions = false, description = "Writes photographs (JPEG, PNG, TIFF) as HEIF stills.",
        footer = {"", "Without -o and -d a still is written beside its photograph, as NAME.heic. A file of that name "
            + "is replaced once the new one is whole; a photograph is never overwritten.", "",
            "Exit status: 0 when every still was written, 1 when one was not, 2 for wrong usage."})
final class StillCommand implements Callable<Integer> {
    @Spec
    private CommandSpec mSpec;

    @Parameters(paramLabel = "PHOTO", arity = "1..*", description = "Photographs to write as stills.")
    private List<Path> mPhotos;

    @Option(names = {"-o", "--output"}, paramLabel = "OUT.heic", description = "Output file, for a single photograph.")
    private Path mOutput;

    @Option(names = {"-d", "--directory"}, paramLabel = "DIR",
            description = "Folder for the outputs; made when it is missing.")
    private Path mDirectory;

    @Mixin
    private PictureOptions mPicture;

    @Override
    public Integer call() {
        StillConversion conversion = mPicture.conversion();
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

    private List<PlannedStill> plan() {
        if (mOutput != null && mDirectory != null) throw mPicture.usage("-o and -d exclude each other");
        if (mOutput != null && mPhotos.size() > 1) {
            throw mPicture.usage("-o names one file; use -d for several photographs");
        }
        if (mOutput != null) return List.of(new PlannedStill(mPhotos.get(0), mOutput));
        try {
            return PlannedStill.forAll(mPhotos, mDirectory);
        } catch (IllegalArgumentException e) {
            throw mPicture.usage(e.getMessage());
        }
    }

    private boolean write(PlannedStill still, List<PlannedStill> all, StillConversion conversion, StillReport report) {
        try {
            FailureText.checkInput(still.mPhoto);
            if (mDirectory != null) makeDirectory();
            still.checkTarget(all);
            report.written(still, conversion.run(still.mPhoto, still.mTarget));
            return true;
        } catch (IOException | OutOfMemoryError | LinkageError | RuntimeException e) {
            // Of any kind: one bad photograph must not keep the others from being written.
            mPicture.reportFailure(report, still, e);
            return false;
        }
    }

    private void makeDirectory() throws IOException {
        try {
            Files.createDirectories(mDirectory);
        } catch (IOException e) {
            throw new IOException("the folder " + mDirectory + " cannot be made: " + FailureText.of(e), e);
        }
    }
}
