package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import java.io.IOException;
import java.io.RandomAccessFile;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;
import org.junit.jupiter.api.io.TempDir;

/** On a device without an encoder; to be run with QUILL_DEVICE=no-encoder. */
class NoEncoderDeviceTest {
    @Test
    @Timeout(value = 8, unit = TimeUnit.SECONDS)  // below the library's own ten seconds
    void nativeCreate_SucceedsAndTheNextFrameFailsAtOnce(@TempDir Path folder) throws IOException {
        FrameLayout layout = Frames.layout(ColorFormat.NV12);
        Path path = folder.resolve("still.heic");
        try (QuillHeifWriter writer = new QuillHeifWriter(layout, 90, 0);  // so nativeCreate has returned 0
                RandomAccessFile file = new RandomAccessFile(path.toFile(), "rw")) {
            assertThrows(IOException.class, () -> writer.writePhoto(Frames.frame(layout), null, file.getFD()));
        }
        assertEquals(0, Files.size(path));
    }
}
