package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.IOException;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.FileSystems;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardWatchEventKinds;
import java.nio.file.WatchService;
import java.util.ArrayList;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.Random;
import java.util.concurrent.TimeUnit;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** The command as a process of its own, where the system's limits and signals reach it. */
class StillProcessTest extends CommandFixture {
    private static final Pattern kTraceEvent = Pattern.compile(
            "\\{\"ph\":\"(.)\".*?\"tid\":(\\d+),\"name\":\"(.*?)\"(?:,\"args\":\\{\"name\":\"(.*?)\"\\})?\\}");

    StillProcessTest() {
        super("still");
    }

    /** Starts the command for a photograph, behind a shell that first runs {@code setUp}. */
    private Process start(String setUp, int width, int height, Object... options) throws IOException {
        Pictures.writeJpeg(mPhoto, Pictures.picture(width, height, false),
                Pictures.exif(ByteOrder.LITTLE_ENDIAN, 1));
        List<String> command = new ArrayList<>(List.of("bash", "-c", setUp + "; exec \"$@\"", "bash"));
        command.addAll(java(Quill.class, "still", mPhoto));
        for (Object option : options) command.add(option.toString());
        return new ProcessBuilder(command).directory(mFolder.toFile()).redirectErrorStream(true).start();
    }

    private static String output(Process process) throws IOException {
        return new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
    }

    /** A limit for files stands for a full disk; the JVM's own file of counters would not fit either. */
    @ParameterizedTest
    @CsvSource(delimiter = '|', value = {
        "ulimit -f 20; export JAVA_TOOL_OPTIONS=-XX:-UsePerfData | 1600 | i420 | the output cannot be written: File",
        "export QUILL_DEVICE=no-encoder | 96 | rgba | the encoder refuses a picture of 96x64 rgba"})
    void still_FailureIsReportedAndLeavesNothing(String setUp, int width, String format, String why) throws Exception {
        Process process = start(setUp, width, width * 2 / 3, "--format", format);
        String output = output(process);
        assertEquals(1, process.waitFor(), output);
        assertTrue(output.contains("photo.jpg: " + why), output);
        assertEquals(List.of("photo.jpg"), files(mFolder));
    }

    @Test
    void still_WaitsLongerForASlowPresetOnTheStretchedClock() throws Exception {
        Process process = start("export QUILL_CLOCK_STRETCH=300", 1200, 900, "--preset", "placebo");
        // A poll of 2 ms, or more; a picture of a megapixel makes each five times as long at this preset.
        Matcher seconds = Pattern.compile("([0-9.]+) s\\R").matcher(output(process));
        assertTrue(seconds.find() && Double.parseDouble(seconds.group(1)) >= 3.2, seconds::toString);
    }

    @Test
    void still_PipeIsNeitherReadNorReplaced() throws Exception {
        String output = output(start("mkfifo pipe", 96, 64, "-o", "pipe"));
        assertTrue(output.contains("photo.jpg: the output pipe is not a regular file"), output);
        assertFails(1, "pipe: is not a regular file", in("pipe"));
        assertEquals(List.of("photo.jpg", "pipe"), files(mFolder));
    }

    @Test
    void still_InterruptedRunRemovesItsUnfinishedFile() throws Exception {
        try (WatchService watch = FileSystems.getDefault().newWatchService()) {
            Process process = start("true", 4000, 3000);
            mFolder.register(watch, StandardWatchEventKinds.ENTRY_CREATE);
            assertTrue(watch.poll(60, TimeUnit.SECONDS) != null, "no output was begun");
            process.destroy();  // a SIGTERM, which ends a JVM as Ctrl-C does
            assertTrue(process.waitFor() != 0, "the signal came too late");
        }
        assertEquals(List.of("photo.jpg"), files(mFolder));
    }

    @Test
    void still_TraceNestsItsStepsByThread() throws Exception {
        Process process = start("export QUILL_TRACE=trace.json", 640, 480);
        assertEquals(0, process.waitFor(), output(process));
        Map<String, String> threads = new HashMap<>();
        Map<String, String> steps = new HashMap<>();
        Matcher event = kTraceEvent.matcher(Files.readString(in("trace.json")));
        while (event.find()) {
            String thread = threads.get(event.group(2));
            if (event.group(1).equals("M")) threads.put(event.group(2), event.group(4));
            if (event.group(1).equals("B")) steps.merge(thread, event.group(3) + "(", String::concat);
            if (event.group(1).equals("E")) steps.merge(thread, ")", String::concat);
        }
        assertEquals(Map.of("java", "start(initEncoder())processInputFrame(analysisExif()saveYuvBuf()alterExif())",
                "QuillHeifWriter", "onMessageReceived(addYuvBuffer(onOutputBufferReceived()))"), steps);
    }

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

    @Test
    void kill_LeavesWholeFilesAndUnfinishedOnesUnderAHiddenName() throws Exception {
        Path large = Pictures.writeJpeg(in("large.jpg"), 800, 600);
        Path extender = Files.write(in("extender"), new byte[1 << 20]);
        Path out = Files.createDirectory(in("out"));
        List<String> loop = java(Loop.class, mPhoto, large, out, kClip, extender);
        Random random = new Random(20240229);
        List<String> names = List.of();
        for (int i = 0; i < 10 || names.size() < 4; ++i) {  // until one fell into the writing of a file, too
            Process process = new ProcessBuilder(loop).redirectErrorStream(true).start();
            BufferedReader reports = process.inputReader();
            for (int files = random.nextInt(6); files >= 0; --files) assertNotNull(reports.readLine());
            process.waitFor(random.nextInt(300), TimeUnit.MILLISECONDS);  // about a file more
            process.destroyForcibly().waitFor();  // a SIGKILL
            names = files(out);
            for (String name : names) {
                Path file = out.resolve(name);
                if (name.matches("\\.[0-9a-z]+\\.heic\\.part")) continue;
                assertTrue(name.matches("(large|live|photo)\\.heic"), name);
                assertDoesNotThrow(() -> HeifFileCheck.check(file), name);
                program("heif-info", file);
                if (!name.equals("live.heic")) continue;
                assertArrayEquals(Files.readAllBytes(kClip), program("exiftool", "-b", "-MotionPhotoVideo", file));
            }
        }
        assertTrue(names.containsAll(List.of("large.heic", "live.heic", "photo.heic")), names::toString);
    }
}
