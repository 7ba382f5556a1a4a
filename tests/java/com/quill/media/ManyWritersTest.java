package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.quill.media.HeifWriteException.Content;
import java.io.File;
import java.io.FileDescriptor;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.lang.reflect.Field;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.Map;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** An app's life in a process of its own, on a device of the test's choice. */
class ManyWritersTest {
    @TempDir
    Path mFolder;

    /** Descriptors and threads of this process. */
    private static String held() {
        return new File("/proc/self/fd").list().length + " and " + new File("/proc/self/task").list().length;
    }

    /** What an app does; its argument is the file to write. */
    static final class App {
        private static void writeStill(String path) throws Exception {
            Field streams = FileDescriptor.class.getDeclaredField("otherParents");
            streams.setAccessible(true);
            try (RandomAccessFile file = new RandomAccessFile(path, "rw")) {
                file.setLength(0);
                PhotoFixture.writer().writePhoto(PhotoFixture.kFrame, null, file.getFD());  // which releases it, too
                if (streams.get(file.getFD()) != null) throw new AssertionError("a stream is on the descriptor");
            }
        }

        public static void main(String[] paths) throws Exception {
            try {
                writeStill(paths[0]);
            } catch (HeifWriteException e) {
                System.out.println(e.content() + " " + e.getMessage().replaceAll("\\d+ ms", "N ms"));
                return;
            }
            String before = held();
            for (int i = 0; i < 1000; ++i) writeStill(paths[0]);
            System.out.println(before.equals(held()) ? "nothing is left" : before + " became " + held());
            for (int i = 0; i < 200; ++i) PhotoFixture.writer();
            while (!before.equals(held())) System.gc();
            System.out.println("nothing leaks");
        }
    }

    private String run(Map<String, String> environment) throws IOException, InterruptedException {
        ProcessBuilder builder = new ProcessBuilder(Path.of(System.getProperty("java.home"), "bin", "java").toString(),
                "-Xcheck:jni", "-XX:+UseSerialGC", "-XX:-UseDynamicNumberOfCompilerThreads",
                "--add-opens=java.base/java.io=ALL-UNNAMED",
                "-Djava.library.path=" + System.getProperty("java.library.path"), "-cp",
                System.getProperty("java.class.path"), App.class.getName(), mFolder.resolve("photo.heic").toString());
        builder.environment().putAll(environment);
        Process process = builder.redirectErrorStream(true).start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(0, process.waitFor(), output);
        return output;
    }

    @Test
    void writers_LeaveNothingAndForgottenOnesAreReleasedAndLogged() throws Exception {
        String output = run(Map.of("QUILL_PROPERTIES", "debug.quill.host.encoder=free", "QUILL_LOG", "warn"));
        assertTrue(output.contains("nothing is left\n") && output.endsWith("nothing leaks\n"), output);
        assertEquals(200, output.split("W QuillHeifWriter: A writer was never closed", -1).length - 1, output);
    }

    @Test
    void encoder_ThatRefusesTheFrameIsNotBlamedOnTheFile() throws Exception {
        assertEquals(Content.UNCHANGED + " Still of " + PhotoFixture.kLayout
                + ": the native writer gave up after N ms. The file is as it was\n",
                run(Map.of("QUILL_DEVICE", "no-encoder")));
    }
}
