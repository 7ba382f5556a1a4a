package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.io.PrintWriter;
import java.io.StringWriter;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.io.TempDir;

/** One command of the program, run in this process: what it says, and a folder with a photograph to work in. */
public class CommandFixture {
    static final Path kPhotos = Path.of(System.getProperty("quill.photos"));
    static final Path kClip = kPhotos.resolve("clip.mp4");

    @TempDir
    Path mFolder;

    Path mPhoto;
    StringWriter mOut;
    StringWriter mErr;

    private final String mCommand;

    CommandFixture(String command) {
        mCommand = command;
    }

    @BeforeEach
    void writePhoto() throws IOException {
        mPhoto = Pictures.writeJpeg(in("photo.jpg"), 160, 96);
    }

    int run(Object... arguments) {
        mOut = new StringWriter();
        mErr = new StringWriter();
        return Quill.commandLine().setOut(new PrintWriter(mOut, true)).setErr(new PrintWriter(mErr, true))
                .execute(joined(Stream.of(mCommand), arguments).toArray(String[]::new));
    }

    private static Stream<String> joined(Stream<String> first, Object... others) {
        return Stream.concat(first, Arrays.stream(others).map(Object::toString));
    }

    Path in(String name) {
        return mFolder.resolve(name);
    }

    static List<String> files(Path folder) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.map(file -> file.getFileName().toString()).sorted().collect(Collectors.toList());
        }
    }

    /** The folder stays as it is. */
    void assertFails(int status, String why, Object... arguments) throws IOException {
        List<String> before = files(mFolder);
        assertEquals(status, run(arguments));
        assertTrue(mErr.toString().startsWith("quill: ") && mErr.toString().contains(why), mErr.toString());
        assertEquals("", mOut.toString());
        assertEquals(before, files(mFolder), why);
    }

    /** The command line that runs {@code main} in a JVM like this one. */
    public static List<String> java(Class<?> main, Object... arguments) {
        return joined(Stream.of(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Djava.library.path=" + System.getProperty("java.library.path"), "-cp",
                System.getProperty("java.class.path"), main.getName()), arguments).collect(Collectors.toList());
    }

    /** What another program writes to its standard output; fails unless it ends well. */
    static byte[] program(Object... command) throws IOException, InterruptedException {
        List<String> words = joined(Stream.of(), command).collect(Collectors.toList());
        ProcessBuilder builder = new ProcessBuilder(words).redirectError(ProcessBuilder.Redirect.DISCARD);
        builder.environment().remove("LD_PRELOAD");  // a sanitizer's runtime is for our own code
        Process process = builder.start();
        byte[] output = process.getInputStream().readAllBytes();
        assertEquals(0, process.waitFor(), words::toString);
        return output;
    }
}
