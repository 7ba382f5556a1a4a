package com.quill.cli;

import java.awt.color.ColorSpace;
import java.awt.image.BufferedImage;
import java.io.BufferedInputStream;
import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Iterator;
import javax.imageio.IIOException;
import javax.imageio.ImageIO;
import javax.imageio.ImageReader;
import javax.imageio.stream.ImageInputStream;

/** A decoded photograph and its EXIF block. */
final class Photograph {
    private final BufferedImage mImage;
    private final byte[] mExif;

    private Photograph(BufferedImage image, byte[] exif) {
        mImage = image;
        mExif = exif;
    }

    /** Reads a JPEG or PNG file; an IOException says why it cannot be used. */
    static Photograph read(Path file) throws IOException {
        byte[] exif;
        try (InputStream stream = new BufferedInputStream(Files.newInputStream(file))) {
            exif = ExifBlock.find(stream);
        }
        return new Photograph(decode(file), exif);
    }

    BufferedImage image() {
        return mImage;
    }

    /** "Exif", 0, 0 and a TIFF structure; null when the file has none. */
    byte[] exif() {
        return mExif;
    }

    private static BufferedImage decode(Path file) throws IOException {
        try (ImageInputStream stream = ImageIO.createImageInputStream(file.toFile())) {
            if (stream == null) throw new IOException("cannot be opened");
            Iterator<ImageReader> readers = ImageIO.getImageReaders(stream);
            if (!readers.hasNext()) throw new IOException("is not a JPEG or PNG picture");
            return decode(readers.next(), stream);
        }
    }

    private static BufferedImage decode(ImageReader reader, ImageInputStream stream) throws IOException {
        String[] firstWarning = {null};
        reader.addIIOReadWarningListener((source, warning) -> {
            if (firstWarning[0] == null) firstWarning[0] = warning;
        });
        try {
            reader.setInput(stream, true, false);
            BufferedImage image = reader.read(0);
            // Half a photograph would go unnoticed among many.
            if (isCutShort(firstWarning[0])) throw new IOException("is cut short");
            checkColors(image.getColorModel().getColorSpace().getType());
            return image;
        } catch (IIOException e) {
            throw new IOException("cannot be decoded: " + e.getMessage(), e);
        } catch (RuntimeException e) {  // readers stumble over broken files in many ways
            throw new IOException("cannot be decoded", e);
        } finally {
            reader.dispose();
        }
    }

    private static void checkColors(int space) throws IOException {
        if (space != ColorSpace.TYPE_RGB && space != ColorSpace.TYPE_GRAY) {
            throw new IOException("is not an RGB or gray picture (CMYK, perhaps: convert it first)");
        }
    }

    private static boolean isCutShort(String warning) {
        return warning != null && (warning.contains("Truncated") || warning.contains("Premature"));
    }
}
