package com.quill.cli;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Set;
import java.util.concurrent.Callable;
import java.util.stream.Collectors;
import picocli.CommandLine.Command;
import picocli.CommandLine.Mixin;
import picocli.CommandLine.Model.CommandSpec;
import picocli.CommandLine.Option;
import picocli.CommandLine.Parameters;
import picocli.CommandLine.Spec;

/** {@code quill still}: photographs to HEIF stills. */
@Command(name = "still", sortOptions = false, description = "Writes photographs (JPEG, PNG, TIFF) as HEIF stills.",
        footer = {"", "Without -o and -d a still is written beside its photograph, as NAME.heic. A file of that name "
            + "is replaced once the new one is whole; a photograph is never overwritten. A still has the time of its "
            + "photograph. A name that begins with a dash stands behind '--'.", "",
            "pictures.md, in share/doc/quill of an installation, tells what a still keeps of each kind of picture.", "",
            "Exit status: 0 when every still was written, 1 when one was not, 2 for wrong usage."})
final class StillCommand implements Callable<Integer> {
    @Spec
    private CommandSpec mSpec;

    @Parameters(paramLabel = "PHOTO", arity = "0..*", description = "Photographs to write as stills.")
    private List<Path> mPhotos = List.of();

    @Option(names = {"-o", "--output"}, paramLabel = "OUT.heic", description = "Output file, for a single photograph.")
    private Path mOutput;

    @Option(names = {"-d", "--directory"}, paramLabel = "DIR",
            description = "Folder for the outputs; made when it is missing.")
    private Path mDirectory;

    @Option(names = {"-r", "--recursive"}, description = "Takes a folder for the photographs (.jpg, .jpeg, .jpe, .png, "
            + ".tif, .tiff) in it and below. With -d the folders below are made there, too.")
    private boolean mRecursive;

    @Option(names = "--files-from", paramLabel = "FILE",
            description = "Takes names from FILE, too, one a line; - is the standard input.")
    private Path mList;

    @Option(names = "--skip-existing", description = "Leaves out photographs whose stills are there.")
    private boolean mSkipExisting;

    @Mixin
    private PictureOptions mPicture;

    private StillConversion mConversion;
    private Set<Object> mKeys;  // of the photographs

    @Override
    public Integer call() {
        mConversion = mPicture.conversion();
        List<PlannedStill> all = plan();
        List<PlannedStill> missing = all.stream().filter(still -> !isSkipped(still)).collect(Collectors.toList());
        PrintWriter err = mSpec.commandLine().getErr();
        StillReport report =
                new StillReport(mSpec.commandLine().getOut(), err, missing.size(), Terminal.isStandardError());
        int written = 0;
        DecodeAhead frames = new DecodeAhead(missing, this::prepare);
        for (PlannedStill still : missing) {
            if (write(still, frames, report)) ++written;
        }
        report.summarize(all.size() - missing.size());
        return written == missing.size() ? 0 : 1;
    }

    private List<PlannedStill> plan() {
        mPicture.checkOutput(mOutput);
        if (mOutput != null && mDirectory != null) throw mPicture.usage("-o and -d exclude each other");
        PhotoList photos = photos();
        mKeys = photos.keys();
        if (mOutput == null) return named(photos);
        if (photos.entries().size() != 1) {
            throw mPicture.usage("-o names one file; use -d for several photographs");
        }
        return List.of(new PlannedStill(photos.entries().get(0).photo(), mOutput));
    }

    private PhotoList photos() {
        if (mPhotos.isEmpty() && mList == null) throw mPicture.usage("no PHOTO is given");
        PhotoList photos = new PhotoList(mRecursive);
        try {
            for (Path photo : mPhotos) photos.add(photo);
            if (mList != null) photos.addListed(mList);
        } catch (IOException e) {
            throw mPicture.usage("the photographs cannot be listed: " + FailureText.of(e));
        }
        if (photos.entries().isEmpty()) throw mPicture.usage("there is no photograph in what is given");
        return photos;
    }

    private List<PlannedStill> named(PhotoList photos) {
        try {
            return PlannedStill.forAll(photos.entries(), mDirectory);
        } catch (IllegalArgumentException e) {
            throw mPicture.usage(e.getMessage());
        }
    }

    private boolean isSkipped(PlannedStill still) {
        return mSkipExisting && Files.isRegularFile(still.mTarget);
    }

    private StillConversion.Frame prepare(PlannedStill still) throws IOException {
        FailureText.checkInput(still.mPhoto);
        if (mDirectory != null) makeDirectory(still.mTarget.getParent());
        still.checkTarget();
        if (mKeys.contains(PhotoList.keyOf(still.mTarget))) {
            throw new IOException("the output would overwrite the photograph " + still.mTarget);
        }
        return mConversion.load(still.mPhoto);
    }

    private boolean write(PlannedStill still, DecodeAhead frames, StillReport report) {
        try {
            report.written(still, mConversion.write(frames.next(), still.mTarget));
            return true;
        } catch (IOException | OutOfMemoryError | LinkageError | RuntimeException e) {
            // Of any kind: one bad photograph must not keep the others from being written.
            mPicture.reportFailure(report, still, e);
            return false;
        }
    }

    private static void makeDirectory(Path folder) throws IOException {
        try {
            Files.createDirectories(folder);
        } catch (IOException e) {
            throw new IOException("the folder " + folder + " cannot be made: " + FailureText.of(e), e);
        }
    }
}
