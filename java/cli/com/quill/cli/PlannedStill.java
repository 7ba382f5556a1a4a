package com.quill.cli;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/** One photograph and the file it becomes. */
final class PlannedStill {
    final Path mPhoto;
    final Path mTarget;

    PlannedStill(Path photo, Path target) {
        mPhoto = photo;
        mTarget = target;
    }

    /**
     * Names the output of each photograph: NAME.heic in {@code folder}, or beside the photograph when that is null.
     * Throws an IllegalArgumentException when two of them would be the same file.
     */
    static List<PlannedStill> forAll(List<Path> photos, Path folder) {
        Map<Path, Path> photoOfTarget = new HashMap<>();
        List<PlannedStill> planned = new ArrayList<>();
        for (Path photo : photos) {
            Path target = targetOf(photo, folder, ".heic");
            Path other = photoOfTarget.putIfAbsent(target.toAbsolutePath().normalize(), photo);
            if (other != null) {
                throw new IllegalArgumentException(other + " and " + photo + " would both become " + target);
            }
            planned.add(new PlannedStill(photo, target));
        }
        return planned;
    }

    /** NAME, the photograph's without its ending, + {@code ending}, in {@code folder} or, when null, beside it. */
    static Path targetOf(Path photo, Path folder, String ending) {
        Path fileName = photo.getFileName();
        String name = fileName == null ? "" : fileName.toString();
        int dot = name.lastIndexOf('.');
        String target = (dot > 0 ? name.substring(0, dot) : name) + ending;
        return folder == null ? photo.resolveSibling(target) : folder.resolve(target);
    }

    /** Throws an IOException that says why when the output cannot take the target's place. */
    void checkTarget(List<PlannedStill> all) throws IOException {
        checkTarget();
        for (PlannedStill planned : all) checkKept("photograph", planned.mPhoto);
    }

    /** The target's place only, whatever else is to be kept. */
    void checkTarget() throws IOException {
        if (Files.isDirectory(mTarget)) throw new IOException("the output " + mTarget + " is a directory");
        Path folder = mTarget.toAbsolutePath().getParent();
        if (!Files.isDirectory(folder)) throw new IOException("there is no folder " + folder + " for the output");
        if (!Files.isWritable(folder)) throw new IOException("the folder " + folder + " is not writable");
        // Renaming over a device such as /dev/null would take it away from everyone.
        if (Files.exists(mTarget) && !Files.isRegularFile(mTarget)) {
            throw new IOException("the output " + mTarget + " is not a regular file");
        }
    }

    /** Throws when the target is {@code source}, an existing file of the given kind, under this name or another. */
    void checkKept(String kind, Path source) throws IOException {
        if (Files.exists(mTarget) && Files.exists(source) && Files.isSameFile(mTarget, source)) {
            throw new IOException("the output would overwrite the " + kind + " " + source);
        }
    }
}
