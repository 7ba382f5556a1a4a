package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Random;
import java.util.Set;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** What a process leaves that is killed at any moment, without a chance to tidy up. */
class KilledProcessTest {
    private static final Path kClip = Path.of(System.getProperty("quill.photos")).resolve("clip.mp4");
    private static final int kTries = 10;
    private static final long kSeed = 20240229;
    private static final int kMostFiles = 6;
    private static final int kLongestMillis = 300;  // about a file more

    @TempDir
    Path mFolder;

    /** Writes two stills and a live photo over and over; its arguments are files and folders of the test. */
    static final class Loop {
        public static void main(String[] paths) {
            for (;;) {
                Quill.commandLine().execute("still", paths[0], paths[1], "-d", paths[2], "--format", "nv12");
                Quill.commandLine().execute("live", paths[0], "--video", paths[3], "--extender", paths[4], "-o",
                        paths[2] + "/live.heic");
            }
        }
    }

    private Process startLoop(Path out) throws IOException {
        Path small = Pictures.writeJpeg(mFolder.resolve("small.jpg"), 320, 240);
        Path large = Pictures.writeJpeg(mFolder.resolve("large.jpg"), 800, 600);
        Path extender = Files.write(mFolder.resolve("extender"), new byte[1 << 20]);
        return new ProcessBuilder(Programs.java(Loop.class, small.toString(), large.toString(), out.toString(),
                kClip.toString(), extender.toString())).redirectErrorStream(true).start();
    }

    private static List<Path> filesOf(Path folder, boolean finished) throws IOException {
        try (Stream<Path> files = Files.list(folder)) {
            return files.filter(file -> finished != file.toString().endsWith(".part")).collect(Collectors.toList());
        }
    }

    private static List<String> namesOf(List<Path> files) {
        return files.stream().map(file -> file.getFileName().toString()).collect(Collectors.toList());
    }

    private static void assertWhole(Path file) throws Exception {
        assertDoesNotThrow(() -> HeifFileCheck.check(file), file::toString);
        Programs.run("heif-info", file.toString());
        if (file.endsWith("live.heic")) {
            byte[] video = Programs.run("exiftool", "-b", "-MotionPhotoVideo", file.toString());
            assertArrayEquals(Files.readAllBytes(kClip), video);
        }
    }

    @Test
    void kill_LeavesWholeFilesAndUnfinishedOnesUnderAHiddenName() throws Exception {
        Path out = Files.createDirectory(mFolder.resolve("out"));
        Random random = new Random(kSeed);
        for (int i = 0; i < kTries; ++i) {
            Process process = startLoop(out);
            BufferedReader reports = process.inputReader();
            for (int files = random.nextInt(kMostFiles); files >= 0; --files) assertNotNull(reports.readLine());
            process.waitFor(random.nextInt(kLongestMillis), TimeUnit.MILLISECONDS);
            process.destroyForcibly().waitFor();  // a SIGKILL
            for (Path file : filesOf(out, true)) assertWhole(file);
        }
        assertEquals(Set.of("large.heic", "live.heic", "small.heic"), Set.copyOf(namesOf(filesOf(out, true))));
        List<String> unfinished = namesOf(filesOf(out, false));
        assertFalse(unfinished.isEmpty(), "no try fell into the writing of a file");
        for (String name : unfinished) assertTrue(name.matches("\\.[0-9a-z]+\\.heic\\.part"), name);
    }
}
