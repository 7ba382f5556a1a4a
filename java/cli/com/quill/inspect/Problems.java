package com.quill.inspect;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/** What is wrong with a file, in the order it was met. A file can be broken in every item: the first ones tell. */
final class Problems {
    private static final int kMaxKept = 20;

    private final List<String> mMessages = new ArrayList<>();
    private int mCount;

    /** One step of the reading; what it could not read does not keep the next ones from being tried. */
    interface Step {
        void run() throws IOException;
    }

    void add(String message) {
        if (++mCount <= kMaxKept) mMessages.add(message);
    }

    /** Runs {@code step}; a FormatException becomes a problem of {@code what}. */
    void guard(String what, Step step) throws IOException {
        try {
            step.run();
        } catch (FormatException e) {
            add(what + " " + e.getMessage());
        }
    }

    List<String> messages() {
        List<String> messages = new ArrayList<>(mMessages);
        if (mCount > kMaxKept) messages.add("and " + (mCount - kMaxKept) + " more problems");
        return Collections.unmodifiableList(messages);
    }
}
