package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.FileSystems;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardWatchEventKinds;
import java.nio.file.WatchService;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.concurrent.TimeUnit;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The command as a process of its own, where the system's limits and signals reach it. */
class StillProcessTest {
    private static final Pattern kTraceEvent = Pattern.compile(
            "\\{\"ph\":\"(.)\".*?\"tid\":(\\d+),\"name\":\"(.*?)\"(?:,\"args\":\\{\"name\":\"(.*?)\"\\})?\\}");

    @TempDir
    Path mFolder;

    /** Starts the command behind a shell that first runs {@code setUp}. */
    private Process start(String setUp, String... arguments) throws IOException {
        List<String> command = new ArrayList<>(List.of("bash", "-c", setUp + "exec \"$@\"", "bash"));
        command.addAll(Programs.java(Quill.class, "still"));
        command.addAll(List.of(arguments));
        return new ProcessBuilder(command).redirectErrorStream(true).start();
    }

    private static String output(Process process) throws IOException {
        return new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
    }

    private List<String> files() throws IOException {
        try (Stream<Path> files = Files.list(mFolder)) {
            return files.map(file -> file.getFileName().toString()).sorted().collect(Collectors.toList());
        }
    }

    /** Sections by thread, in order, each behind those that it lies in. */
    private static Map<String, List<String>> sections(String trace) {
        Map<String, String> threads = new HashMap<>();
        Map<String, Deque<String>> open = new HashMap<>();
        Map<String, List<String>> sections = new TreeMap<>();
        Matcher event = kTraceEvent.matcher(trace);
        while (event.find()) {
            String kind = event.group(1), thread = event.group(2);
            Deque<String> path = open.computeIfAbsent(thread, tid -> new ArrayDeque<>());
            if (kind.equals("M")) threads.put(thread, event.group(4));
            if (kind.equals("E")) path.removeLast();
            if (!kind.equals("B")) continue;
            path.addLast(event.group(3));
            sections.computeIfAbsent(threads.get(thread), name -> new ArrayList<>()).add(String.join(" > ", path));
        }
        open.values().forEach(path -> assertEquals(0, path.size(), "left open: " + path));
        return sections;
    }

    @Test
    void still_FullDiskIsReportedAndLeavesNothing() throws Exception {
        Path photo = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 1600, 1200);
        // A limit for files stands for a full disk, with room for less than the still. The JVM's own file of counters
        // would not fit either.
        Process process = start("ulimit -f 20; export JAVA_TOOL_OPTIONS=-XX:-UsePerfData; ", photo.toString());
        String output = output(process);
        assertEquals(1, process.waitFor(), output);
        assertTrue(output.contains("photo.jpg: the output cannot be written: File too large"), output);
        assertEquals(List.of("photo.jpg"), files());
    }

    @Test
    void still_RefusalByTheEncoderNamesThePictureAndLeavesNothing() throws Exception {
        Path photo = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 96, 64);
        Process process = start("export QUILL_DEVICE=no-encoder; ", photo.toString(), "--format", "rgba");
        String output = output(process);
        assertEquals(1, process.waitFor(), output);
        assertTrue(output.contains("photo.jpg: the encoder refuses a picture of 96x64 rgba"), output);
        assertEquals(List.of("photo.jpg"), files());
    }

    @Test
    void still_WaitsLongerForASlowPresetOnTheStretchedClock() throws Exception {
        Path photo = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 1200, 900);
        Process process = start("export QUILL_CLOCK_STRETCH=300; ", photo.toString(), "--preset", "placebo");
        // A poll of 2 ms, or more; a picture of a megapixel makes each five times as long at this preset.
        Matcher seconds = Pattern.compile("([0-9.]+) s\\R").matcher(output(process));
        assertTrue(seconds.find() && Double.parseDouble(seconds.group(1)) >= 3.2, seconds::toString);
    }

    @Test
    void still_PipeIsNeitherReadNorReplaced() throws Exception {
        Path photo = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 96, 64);
        Path pipe = mFolder.resolve("pipe");
        Process process = start("mkfifo " + pipe + "; ", photo.toString(), "-o", pipe.toString());
        assertTrue(output(process).contains("photo.jpg: the output " + pipe + " is not a regular file"));
        process = start("", pipe.toString());
        assertTrue(output(process).contains("pipe: is not a regular file"));
        assertEquals(List.of("photo.jpg", "pipe"), files());
    }

    @Test
    void still_InterruptedRunRemovesItsUnfinishedFile() throws Exception {
        Path photo = Pictures.writeJpeg(mFolder.resolve("photo.jpg"), 4000, 3000);
        try (WatchService watch = FileSystems.getDefault().newWatchService()) {
            mFolder.register(watch, StandardWatchEventKinds.ENTRY_CREATE);
            Process process = start("", photo.toString());
            assertTrue(watch.poll(60, TimeUnit.SECONDS) != null, "no output was begun");
            process.destroy();  // a SIGTERM, which ends a JVM as Ctrl-C does
            assertTrue(process.waitFor() != 0, "the signal came too late");
        }
        assertEquals(List.of("photo.jpg"), files());
    }

    @Test
    void still_TraceNestsItsStepsByThread() throws Exception {
        Path photo = mFolder.resolve("photo.jpg");
        Path trace = mFolder.resolve("trace.json");
        Files.write(photo, Pictures.jpegWithExif(640, 480, Pictures.exif(ByteOrder.LITTLE_ENDIAN, 1)));
        Process process = start("export QUILL_TRACE=" + trace + "; ", photo.toString());
        assertEquals(0, process.waitFor(), output(process));
        assertEquals(
                Map.of("java",
                        List.of("start", "start > initEncoder", "processInputFrame", "processInputFrame > analysisExif",
                                "processInputFrame > saveYuvBuf", "processInputFrame > alterExif"),
                        "QuillHeifWriter",
                        List.of("onMessageReceived", "onMessageReceived > addYuvBuffer",
                                "onMessageReceived > addYuvBuffer > onOutputBufferReceived")),
                sections(Files.readString(trace)));
    }
}
