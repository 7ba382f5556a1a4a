package com.quill.inspect;

import com.quill.files.AtomicOutput;
import java.io.IOException;
import java.nio.channels.FileChannel;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardOpenOption;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** Writes the parts of a file as files of their own: of each kind the first. Live-photo sections are never in memory. */
public final class Extraction {
    private Extraction() {}

    /** Writes one part to an empty file. */
    private interface Part {
        void writeTo(Path file) throws IOException;
    }

    /**
     * Writes what there is of "exif.bin", "thumbnail.jpg", "xmp.xml", "video.mp4", "gainmap.bin" and "extender.bin" into
     * {@code folder}, which is made, and returns the files. Each appears when it is whole and replaces one of its name, but never the inspected file itself.
     */
    public static List<Path> write(HeifReport report, Path folder) throws IOException {
        Files.createDirectories(folder);
        List<Path> written = new ArrayList<>();
        for (Map.Entry<String, Part> part : parts(report).entrySet()) {
            Path target = folder.resolve(part.getKey());
            checkTarget(report, target);
            writeWhole(target, part.getValue());
            written.add(target);
        }
        return written;
    }

    private static Map<String, Part> parts(HeifReport report) {
        Map<String, Part> parts = new LinkedHashMap<>();
        for (ExifData exif : report.mExif) {
            parts.putIfAbsent("exif.bin", file -> Files.write(file, exif.sample()));
            Thumbnail thumbnail = exif.thumbnail();
            if (thumbnail == null || thumbnail.data() == null) continue;
            parts.putIfAbsent("thumbnail.jpg", file -> Files.write(file, thumbnail.data()));
        }
        for (XmpPacket xmp : report.mXmp) parts.putIfAbsent("xmp.xml", file -> Files.write(file, xmp.bytes()));
        for (LivePhotoSection section : report.mLivePhoto) {
            parts.putIfAbsent(section.kind().mFile, file -> copySection(report.mPath, section, file));
        }
        return parts;
    }

    private static void copySection(Path source, LivePhotoSection section, Path target) throws IOException {
        try (FileChannel from = FileChannel.open(source, StandardOpenOption.READ);
                FileChannel to = FileChannel.open(target, StandardOpenOption.WRITE)) {
            for (long done = 0; done < section.size(); ) {
                long copied = from.transferTo(section.offset() + done, section.size() - done, to);
                if (copied <= 0) throw new IOException(source + " became shorter while it was read");
                done += copied;
            }
        }
    }

    private static void checkTarget(HeifReport report, Path target) throws IOException {
        if (!Files.exists(target)) return;
        if (!Files.isRegularFile(target)) throw new IOException("the output " + target + " is not a regular file");
        if (Files.isSameFile(target, report.mPath)) throw new IOException("the output would overwrite " + target);
    }

    private static void writeWhole(Path target, Part part) throws IOException {
        try (AtomicOutput output = new AtomicOutput(target)) {
            part.writeTo(output.growing());
            output.publish(whole -> {}, null);
        }
    }
}
