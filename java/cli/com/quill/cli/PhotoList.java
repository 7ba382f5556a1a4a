package com.quill.cli;

import com.quill.inspect.FileNames;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.FileVisitResult;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.SimpleFileVisitor;
import java.nio.file.attribute.BasicFileAttributes;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;

/** The photographs of one run, in order: files by name, names in a list, and what is in folders. */
final class PhotoList {
    private static final Set<String> kEndings = Set.of("jpg", "jpeg", "jpe", "png", "tif", "tiff");

    /** A photograph, and its place below the output folder: its name, within the folder it was found in. */
    record Entry(Path photo, Path place) {}

    private final boolean mRecursive;
    private final List<Entry> mEntries = new ArrayList<>();

    /** {@code recursive}: a folder stands for the photographs in it and in the folders below. */
    PhotoList(boolean recursive) {
        mRecursive = recursive;
    }

    List<Entry> entries() {
        return mEntries;
    }

    void add(Path path) throws IOException {
        if (mRecursive && Files.isDirectory(path) && Files.isReadable(path)) {
            addFolder(path);
        } else {
            mEntries.add(new Entry(path, path.getFileName() == null ? path : path.getFileName()));
        }
    }

    /** Adds what a file lists, a name a line; "-" is the standard input. */
    void addListed(Path list) throws IOException {
        try (InputStream stream = list.toString().equals("-") ? System.in : Files.newInputStream(list)) {
            for (String name : new String(stream.readAllBytes(), FileNames.kCharset).split("\r?\n")) {
                if (!name.isEmpty()) add(Path.of(name));
            }
        }
    }

    private void addFolder(Path folder) throws IOException {
        Path start = folder.resolve(".");  // a link to a folder is followed, links within it are not
        List<Path> found = new ArrayList<>();
        Files.walkFileTree(start, new SimpleFileVisitor<>() {
            @Override
            public FileVisitResult visitFile(Path file, BasicFileAttributes attributes) {
                if (isPhotograph(file)) found.add(file);
                return FileVisitResult.CONTINUE;
            }

            @Override
            public FileVisitResult visitFileFailed(Path file, IOException why) {
                found.add(file);  // a folder that cannot be read: to fail in its turn, and alone
                return FileVisitResult.CONTINUE;
            }
        });
        found.stream().map(start::relativize).sorted()
                .forEach(place -> mEntries.add(new Entry(folder.resolve(place), place)));
    }

    private static boolean isPhotograph(Path file) {
        String name = file.getFileName() == null ? "" : file.getFileName().toString();
        String ending = name.substring(name.lastIndexOf('.') + 1).toLowerCase(Locale.ROOT);
        return !name.startsWith(".") && kEndings.contains(ending) && Files.isRegularFile(file);
    }

    /** What the file system knows the photographs by, under whatever name. */
    Set<Object> keys() {
        Set<Object> keys = new HashSet<>();
        for (Entry entry : mEntries) {
            Object key = keyOf(entry.photo());
            if (key != null) keys.add(key);
        }
        return keys;
    }

    /** Null when there is no such file. */
    static Object keyOf(Path file) {
        try {
            return Files.readAttributes(file, BasicFileAttributes.class).fileKey();
        } catch (IOException e) {
            return null;
        }
    }
}
