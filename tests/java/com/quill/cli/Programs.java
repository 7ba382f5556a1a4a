package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;

/** Other people's programs, which read what is written here. */
final class Programs {
    private Programs() {}

    /** The command line that runs {@code main} in a JVM like this one. */
    static List<String> java(Class<?> main, String... arguments) {
        List<String> command = new ArrayList<>(List.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Djava.library.path=" + System.getProperty("java.library.path"), "-cp",
                System.getProperty("java.class.path"), main.getName()));
        command.addAll(List.of(arguments));
        return command;
    }

    /** What {@code command} writes to its standard output; fails unless it ends well. */
    static byte[] run(String... command) throws IOException, InterruptedException {
        ProcessBuilder builder = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.DISCARD);
        builder.environment().remove("LD_PRELOAD");  // a sanitizer's runtime is for our own code
        Process process = builder.start();
        byte[] output = process.getInputStream().readAllBytes();
        assertEquals(0, process.waitFor(), String.join(" ", command));
        return output;
    }
}
