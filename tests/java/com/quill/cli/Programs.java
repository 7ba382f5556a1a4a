package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;

/** Other people's programs, which read what is written here. */
final class Programs {
    private Programs() {}

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
