package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.fasterxml.jackson.core.JsonFactory;
import com.fasterxml.jackson.core.JsonParser;
import com.fasterxml.jackson.core.JsonToken;
import java.io.IOException;
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
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** The trace of one still, as a viewer of Chrome's trace events reads it. */
class TraceTest {
    @TempDir
    Path mFolder;

    /** Members by name, those of "args" as "args.name". */
    private static List<Map<String, String>> events(Path trace) throws IOException {
        List<Map<String, String>> events = new ArrayList<>();
        try (JsonParser json = new JsonFactory().createParser(trace.toFile())) {
            assertEquals(JsonToken.START_ARRAY, json.nextToken());
            while (json.nextToken() == JsonToken.START_OBJECT) events.add(members(json, ""));
            assertEquals(JsonToken.END_ARRAY, json.currentToken());
            assertEquals(null, json.nextToken());
        }
        return events;
    }

    private static Map<String, String> members(JsonParser json, String prefix) throws IOException {
        Map<String, String> members = new HashMap<>();
        while (json.nextToken() == JsonToken.FIELD_NAME) {
            String name = prefix + json.getCurrentName();
            if (json.nextToken() == JsonToken.START_OBJECT) {
                members.putAll(members(json, name + "."));
            } else {
                members.put(name, json.getText());
            }
        }
        return members;
    }

    /** Sections by thread, in order, each behind those that it lies in. */
    private static Map<String, List<String>> sections(List<Map<String, String>> events) {
        Map<String, String> threads = new HashMap<>();
        Map<String, Deque<String>> open = new HashMap<>();
        Map<String, List<String>> sections = new TreeMap<>();
        for (Map<String, String> event : events) {
            String thread = event.get("tid");
            Deque<String> path = open.computeIfAbsent(thread, tid -> new ArrayDeque<>());
            if (event.get("ph").equals("M")) threads.put(thread, event.get("args.name"));
            if (event.get("ph").equals("E")) path.removeLast();
            if (!event.get("ph").equals("B")) continue;
            path.addLast(event.get("name"));
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
                sections(events(trace)));
    }
}
