package com.quill.inspect;

import java.nio.charset.Charset;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;

/**
 * A file name is bytes, and Java has a text in their place. In a JVM that the program {@code quill} started each character
 * of it is a byte, and goes out as one: other text that is printed beside names has to be brought to the same form.
 */
public final class FileNames {
    /** Of the names in this JVM, and of what it prints. */
    public static final Charset kCharset = Charset.forName(System.getProperty("sun.jnu.encoding"));

    private FileNames() {}

    /** The name to read, with U+FFFD for what is not UTF-8. */
    static String textOf(Path path) {
        return new String(path.toString().getBytes(kCharset), StandardCharsets.UTF_8);
    }

    /** {@code text} so that it is printed as UTF-8. */
    public static String printed(String text) {
        return new String(text.getBytes(StandardCharsets.UTF_8), kCharset);
    }
}
