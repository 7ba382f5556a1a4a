package com.quill.cli;

import java.io.IOException;
import java.io.InputStream;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;

/**
 * A photograph: its pixels, its EXIF block or null, and what of it a still cannot hold.
 *
 * <p>JPEG files go through TurboJPEG; ImageIO with its plug-ins, which takes longer to start, is for all others.
 */
record Photograph(Pixels pixels, byte[] exif, Losses losses) {
    private static final int kHeadBytes = 12;

    /** Reads a picture file; an IOException says why it cannot be used. */
    static Photograph read(Path file) throws IOException {
        String head = head(file);
        if (head.isEmpty()) throw new IOException("is empty");
        if (head.startsWith("ftyp", 4)) throw new IOException("is a HEIF or video file, and not read");
        if (head.startsWith("\u00ff\u00d8")) return readJpeg(file);
        Metadata metadata = head.startsWith("\u0089PNG") ? new PngFile(file) : isTiff(head) ? new TiffFile(file) : null;
        return metadata == null ? readOther(file) : read(file, metadata, metadata.profile());
    }

    private static Photograph readJpeg(Path file) throws IOException {
        byte[] jpeg = Files.readAllBytes(file);
        JpegFile metadata = new JpegFile(jpeg);
        Losses losses = new Losses();
        JpegPixels pixels = new JpegPixels(jpeg, metadata.profile(), losses);
        if (pixels.isFourColors()) return read(file, metadata, null);
        metadata.addLosses(losses);
        return new Photograph(pixels, metadata.exif(), losses);
    }

    /** {@code profile} null: the decoder sees to it. */
    private static Photograph read(Path file, Metadata metadata, byte[] profile) throws IOException {
        Losses losses = new Losses();
        Pixels pixels = ImageFile.read(file, profile, losses);
        metadata.addLosses(losses);
        return new Photograph(pixels, metadata.exif(), losses);
    }

    private static Photograph readOther(Path file) throws IOException {
        Losses losses = new Losses();
        return new Photograph(ImageFile.read(file, null, losses), null, losses);
    }

    private static boolean isTiff(String head) {
        return head.startsWith("II*\0") || head.startsWith("MM\0*");
    }

    private static String head(Path file) throws IOException {
        try (InputStream stream = Files.newInputStream(file)) {
            return new String(stream.readNBytes(kHeadBytes), StandardCharsets.ISO_8859_1);
        }
    }
}
