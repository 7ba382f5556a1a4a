package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertDoesNotThrow;
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
    void check_WholeFileAndBoxUpToTheEndPass() {
        assertDoesNotThrow(() -> check(whole()));
        byte[] openEnded = whole();
        openEnded[16 + 12 + 3] = 0;
        assertDoesNotThrow(() -> check(openEnded));
    }

    @Test
    void check_FileCutAtAnyLengthIsFound() {
        byte[] whole = whole();
        for (int length = 0; length < whole.length; ++length) {
            byte[] cut = Arrays.copyOf(whole, length);
            assertThrows(IOException.class, () -> check(cut), "cut to " + length);
        }
    }

    @Test
    void check_OtherFilesAndSizesThatLeadNowhereAreFound() {
        byte[] headless = Arrays.copyOfRange(whole(), 16, whole().length);
        assertThrows(IOException.class, () -> check(headless));
        byte[] negative = whole();
        negative[16 + 12 + 8] = (byte) 0x80;
        assertThrows(IOException.class, () -> check(negative));
        byte[] tiny = whole();
        tiny[16 + 3] = 4;
        assertThrows(IOException.class, () -> check(tiny));
    }
}
