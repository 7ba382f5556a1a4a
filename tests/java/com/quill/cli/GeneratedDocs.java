package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/** Sections of documents that tests make. */
final class GeneratedDocs {
    private GeneratedDocs() {}

    /** Fails unless the section {@code name} is {@code text}; with QUILL_UPDATE_DOCS=1 it is rewritten. */
    static void expectSection(Path document, String name, String text) throws IOException {
        String begin = "<!-- " + name + ": begin -->\n";
        String whole = Files.readString(document);
        int from = whole.indexOf(begin) + begin.length();
        int to = whole.indexOf("<!-- " + name + ": end -->");
        if ("1".equals(System.getenv("QUILL_UPDATE_DOCS"))) {
            Files.writeString(document, whole.substring(0, from) + text + whole.substring(to));
        } else {
            assertEquals(whole.substring(from, to), text, document + "; QUILL_UPDATE_DOCS=1 rewrites it");
        }
    }
}
