package com.quill.inspect;

import java.nio.charset.StandardCharsets;

/** An XMP item (ISO 16684-1), as it is stored. */
record XmpPacket(long itemId, byte[] bytes) {
    static final String kContentType = "application/rdf+xml";

    String text() {
        return new String(bytes, StandardCharsets.UTF_8);
    }
}
