package com.quill.cli;

import java.io.IOException;
import java.nio.file.AccessDeniedException;
import java.nio.file.FileSystemException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.util.Locale;

/** Why a file could not be read or written, for the user. */
final class FailureText {
    private FailureText() {}

    static String of(Throwable failure) {
        if (failure instanceof IOException) return ofFile((IOException) failure);
        if (failure instanceof OutOfMemoryError) return "there is not enough memory for the picture";
        if (failure instanceof LinkageError) return "the native library cannot be used: " + failure.getMessage();
        return "failed unexpectedly: " + failure;
    }

    /** Throws when {@code file} is nothing that can be read from start to end; a pipe, say, would block. */
    static void checkInput(Path file) throws IOException {
        if (!Files.exists(file)) throw new IOException("there is no such file");
        if (Files.isDirectory(file) && !Files.isReadable(file)) throw new IOException("this folder may not be read");
        if (Files.isDirectory(file)) throw new IOException("is a directory (still -r takes the photographs in it)");
        if (!Files.isRegularFile(file)) throw new IOException("is not a regular file");
    }

    /** {@code text} in one line that a terminal shows and does not obey: a file's name may hold anything. */
    static String line(String text) {
        StringBuilder line = new StringBuilder();
        for (char c : text.toCharArray()) {
            boolean control = c < ' ' || c == 0x7f;
            line.append(control ? String.format(Locale.ROOT, "\\x%02x", (int) c) : String.valueOf(c));
        }
        return line.toString();
    }

    private static String ofFile(IOException e) {
        if (e instanceof NoSuchFileException) return "there is no file " + e.getMessage();
        if (e instanceof AccessDeniedException) return "access to " + e.getMessage() + " is denied";
        if (e instanceof FileSystemException) {
            FileSystemException failure = (FileSystemException) e;
            return failure.getFile() + ": " + (failure.getReason() == null ? "cannot be used" : failure.getReason());
        }
        return e.getMessage() == null ? e.toString() : e.getMessage();
    }
}
