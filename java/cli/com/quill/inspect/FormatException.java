package com.quill.inspect;

import java.io.IOException;

/** Data that is not what its place in the file says; the message tells what and why. */
public final class FormatException extends IOException {
    private static final long serialVersionUID = 1;

    FormatException(String message) {
        super(message);
    }
}
