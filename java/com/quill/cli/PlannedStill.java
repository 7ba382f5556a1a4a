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
            Path target = targetOf(photo, folder);
            Path other = photoOfTarget.putIfAbsent(target.toAbsolutePath().normalize(), photo);
            if (other != null) {
                throw new IllegalArgumentException(other + " and " + photo + " would both become " + target);
            }
            planned.add(new PlannedStill(photo, target));
        }
        return planned;
    }

    private static Path targetOf(Path photo, Path folder) {
        Path fileName = photo.getFileName();
        String name = fileName == null ? "" : fileName.toString();
        int dot = name.lastIndexOf('.');
        String heic = (dot > 0 ? name.substring(0, dot) : name) + ".heic";
        return folder == null ? photo.resolveSibling(heic) : folder.resolve(heic);
    }

    /** Throws an IOException that says why when the output cannot take the target's place. */
    void checkTarget(List<PlannedStill> all) throws IOException {
        if (Files.isDirectory(mTarget)) throw new IOException("the output " + mTarget + " is a directory");
        Path folder = mTarget.toAbsolutePath().getParent();
        if (!Files.isDirectory(folder)) throw new IOException("there is no folder " + folder + " for the output");
        if (!Files.isWritable(folder)) throw new IOException("the folder " + folder + " is not writable");
        if (!Files.exists(mTarget)) return;
        // Renaming over a device such as /dev/null would take it away from everyone.
        if (!Files.isRegularFile(mTarget)) throw new IOException("the output " + mTarget + " is not a regular file");
        for (PlannedStill planned : all) {
            if (Files.exists(planned.mPhoto) && Files.isSameFile(mTarget, planned.mPhoto)) {
                throw new IOException("the output would overwrite the photograph " + planned.mPhoto);
            }
        }
    }
}
