package com.quill.cli;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/** What a standard stream is connected to; Java itself can tell of input and output only, and only of both at once. */
final class Terminal {
    private static final Path kStandardError = Path.of("/proc/self/fd/2");

    private Terminal() {}

    static boolean isStandardError() {
        try {
            String name = Files.readSymbolicLink(kStandardError).toString();
            return name.startsWith("/dev/pts/") || name.startsWith("/dev/tty") || name.equals("/dev/console");
        } catch (IOException e) {
            return false;
        }
    }
}
