package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.PrintWriter;
import java.io.StringWriter;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.stream.Stream;
import org.junit.jupiter.api.io.TempDir;

/** One command of the program, run in this process: what it says, and a folder to work in. */
class CommandFixture {
    @TempDir
    Path mFolder;

    StringWriter mOut;
    StringWriter mErr;

    private final String mCommand;

    CommandFixture(String command) {
        mCommand = command;
    }

    int run(Object... arguments) {
        mOut = new StringWriter();
        mErr = new StringWriter();
        return Quill.commandLine().setOut(new PrintWriter(mOut, true)).setErr(new PrintWriter(mErr, true))
                .execute(Stream.concat(Stream.of(mCommand), Arrays.stream(arguments)).map(Object::toString)
                        .toArray(String[]::new));
    }

    Path in(String name) {
        return mFolder.resolve(name);
    }

    void assertFails(int status, String why, Object... arguments) {
        assertEquals(status, run(arguments));
        assertTrue(mErr.toString().startsWith("quill: ") && mErr.toString().contains(why), mErr.toString());
        assertEquals("", mOut.toString());
    }
}
