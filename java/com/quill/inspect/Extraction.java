package com.quill.inspect;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.concurrent.ThreadLocalRandom;

/** Writes the metadata of a file as files of their own: of each kind the first. */
public final class Extraction {
    private Extraction() {}

    /**
     * Writes what there is of "exif.bin", "thumbnail.jpg" and "xmp.xml" into {@code folder}, which is made, and returns
     * the files. Each appears when it is whole and replaces one of its name, but never the inspected file itself.
     */
    public static List<Path> write(HeifReport report, Path folder) throws IOException {
        Files.createDirectories(folder);
        List<Path> written = new ArrayList<>();
        for (Map.Entry<String, byte[]> part : parts(report).entrySet()) {
            Path target = folder.resolve(part.getKey());
            checkTarget(report, target);
            writeWhole(target, part.getValue());
            written.add(target);
        }
        return written;
    }

    private static Map<String, byte[]> parts(HeifReport report) {
        Map<String, byte[]> parts = new LinkedHashMap<>();
        for (ExifData exif : report.mExif) {
            parts.putIfAbsent("exif.bin", exif.sample());
            Thumbnail thumbnail = exif.thumbnail();
            if (thumbnail != null && thumbnail.data() != null) parts.putIfAbsent("thumbnail.jpg", thumbnail.data());
        }
        for (XmpPacket xmp : report.mXmp) parts.putIfAbsent("xmp.xml", xmp.bytes());
        return parts;
    }

    private static void checkTarget(HeifReport report, Path target) throws IOException {
        if (!Files.exists(target)) return;
        if (!Files.isRegularFile(target)) throw new IOException("the output " + target + " is not a regular file");
        if (Files.isSameFile(target, report.mPath)) throw new IOException("the output would overwrite " + target);
    }

    private static void writeWhole(Path target, byte[] bytes) throws IOException {
        String unique = Long.toString(ThreadLocalRandom.current().nextLong(Long.MAX_VALUE), Character.MAX_RADIX);
        Path growing = target.resolveSibling("." + unique + ".part");
        growing.toFile().deleteOnExit();  // when the process is interrupted
        try {
            Files.write(growing, bytes);
            Files.move(growing, target, StandardCopyOption.ATOMIC_MOVE);
        } finally {
            Files.deleteIfExists(growing);
        }
    }
}
