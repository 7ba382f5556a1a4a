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
    private static final String kEnding = ".heic";

    final Path mPhoto;
    final Path mTarget;

    PlannedStill(Path photo, Path target) {
        mPhoto = photo;
        mTarget = target;
    }

    /**
     * Names the output of each photograph: NAME.heic beside it or, unless that is null, at its place below
     * {@code folder}. Throws an IllegalArgumentException when two of them would be the same file.
     */
    static List<PlannedStill> forAll(List<PhotoList.Entry> photos, Path folder) {
        Map<Path, Path> photoOfTarget = new HashMap<>();
        List<PlannedStill> planned = new ArrayList<>();
        for (PhotoList.Entry entry : photos) {
            Path photo = entry.photo();
            Path target = folder == null ? targetOf(photo, kEnding) : folder.resolve(targetOf(entry.place(), kEnding));
            Path other = photoOfTarget.putIfAbsent(target.toAbsolutePath().normalize(), photo);
            if (other != null) throw new IllegalArgumentException(clash(other, photo, target));
            planned.add(new PlannedStill(photo, target));
        }
        return planned;
    }

    private static String clash(Path one, Path other, Path target) {
        boolean same = one.toAbsolutePath().normalize().equals(other.toAbsolutePath().normalize());
        return same ? other + " is named twice" : one + " and " + other + " would both become " + target;
    }

    /** NAME, the photograph's without its ending, + {@code ending}, beside it. */
    static Path targetOf(Path photo, String ending) {
        Path fileName = photo.getFileName();
        String name = fileName == null ? "" : fileName.toString();
        int dot = name.lastIndexOf('.');
        return photo.resolveSibling((dot > 0 ? name.substring(0, dot) : name) + ending);
    }

    /** Throws an IOException that says why when the output cannot take the target's place, whatever is to be kept. */
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
