package com.quill.inspect;

import java.util.Locale;

/** Text out of a file made fit for a terminal: what could steer it or hide something is spelled out. */
final class Printable {
    private Printable() {}

    static String of(String text) {
        StringBuilder out = new StringBuilder();
        text.codePoints().forEach(point -> {
            if (isPlain(point)) {
                out.appendCodePoint(point);
            } else {
                out.append(String.format(Locale.ROOT, "\\u%04x", point));
            }
        });
        return out.toString();
    }

    /** At most {@code max} characters of {@code text}, with dots for the rest. */
    static String shortened(String text, int max) {
        if (text.length() <= max) return text;
        int end = Character.isHighSurrogate(text.charAt(max - 1)) ? max - 1 : max;
        return text.substring(0, end) + "...";
    }

    private static boolean isPlain(int point) {
        switch (Character.getType(point)) {
            case Character.CONTROL:
            case Character.FORMAT:
            case Character.SURROGATE:
            case Character.UNASSIGNED:
            case Character.LINE_SEPARATOR:
            case Character.PARAGRAPH_SEPARATOR:
                return false;
            default:
                return true;
        }
    }
}
