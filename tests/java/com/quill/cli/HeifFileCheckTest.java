package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class HeifFileCheckTest {
    @TempDir
    Path mFolder;

    private void check(byte[] file) throws IOException {
        HeifFileCheck.check(Files.write(mFolder.resolve("file"), file));
    }

    private static ByteBuffer box(ByteBuffer file, int size, String type) {
        return file.putInt(size).put(type.getBytes(StandardCharsets.US_ASCII));
    }

    /** ftyp, meta, and an mdat whose size is given in the large form. */
    private static byte[] whole() {
        ByteBuffer file = ByteBuffer.allocate(16 + 12 + 20);
        box(file, 16, "ftyp").putLong(0);
        box(file, 12, "meta").putInt(0);
        box(file, 1, "mdat").putLong(20).putInt(0);
        return file.array();
    }

    @Test
    void check_FileCutAtAnyLengthIsFound() throws IOException {
        byte[] whole = whole();
        check(whole);
        for (int length = 0; length < whole.length; ++length) {
            byte[] cut = Arrays.copyOf(whole, length);
            assertThrows(IOException.class, () -> check(cut), "cut to " + length);
        }
        byte[] headless = Arrays.copyOfRange(whole, 16, whole.length);
        assertThrows(IOException.class, () -> check(headless));
    }
}
