package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.TreeMap;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The trace of one still, as a viewer of Chrome's trace events reads it. */
class TraceTest {
    private static final Pattern kEvent = Pattern.compile(
            "\\{\"ph\":\"(.)\".*?\"tid\":(\\d+),\"name\":\"(.*?)\"(?:,\"args\":\\{\"name\":\"(.*?)\"\\})?\\}");

    @TempDir
    Path mFolder;

    /** Sections by thread, in order, each behind those that it lies in. */
    private static Map<String, List<String>> sections(String trace) {
        Map<String, String> threads = new HashMap<>();
        Map<String, Deque<String>> open = new HashMap<>();
        Map<String, List<String>> sections = new TreeMap<>();
        Matcher event = kEvent.matcher(trace);
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
    void trace_OneStillNestsItsStepsByThread() throws Exception {
        Path photo = mFolder.resolve("photo.jpg"), trace = mFolder.resolve("trace.json");
        Files.write(photo, Pictures.jpegWithExif(640, 480, Pictures.exif(ByteOrder.LITTLE_ENDIAN, 1)));
        ProcessBuilder still = new ProcessBuilder(Programs.java(Quill.class, "still", photo.toString())).inheritIO();
        still.environment().put("QUILL_TRACE", trace.toString());
        assertEquals(0, still.start().waitFor());
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
