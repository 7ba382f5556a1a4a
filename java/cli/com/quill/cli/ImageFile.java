package com.quill.cli;

import java.awt.color.ColorSpace;
import java.awt.color.ICC_ColorSpace;
import java.awt.image.BufferedImage;
import java.io.EOFException;
import java.io.IOException;
import java.nio.file.Path;
import java.util.Iterator;
import javax.imageio.IIOException;
import javax.imageio.ImageIO;
import javax.imageio.ImageReadParam;
import javax.imageio.ImageReader;
import javax.imageio.ImageTypeSpecifier;
import javax.imageio.stream.ImageInputStream;

/** The first picture of a file, by whatever plug-in of ImageIO reads it. */
final class ImageFile {
    private static final String kPlugins = "com.twelvemonkeys.";

    private ImageFile() {}

    /** An IOException says why there is no picture. {@code profile} null: the image's own colors count. */
    static Pixels read(Path file, byte[] profile, Losses losses) throws IOException {
        BufferedImage image = decode(file, losses);
        ColorSpace space = image.getColorModel().getColorSpace();
        if (profile != null) {
            return new ImagePixels(image, ColorConversion.of(profile, space.getNumComponents(), losses));
        }
        boolean own = space instanceof ICC_ColorSpace && !space.isCS_sRGB() && !isPlainGray(space);
        if (!own) return new ImagePixels(image, null);
        return new ImagePixels(image,
                ColorConversion.of(((ICC_ColorSpace) space).getProfile(), space.getNumComponents(), losses));
    }

    // Java's own gray is of linear light, but stands for samples whose curve the file does not tell: sRGB's.
    private static boolean isPlainGray(ColorSpace space) {
        return space == ColorSpace.getInstance(ColorSpace.CS_GRAY);
    }

    private static BufferedImage decode(Path file, Losses losses) throws IOException {
        try (ImageInputStream stream = ImageIO.createImageInputStream(file.toFile())) {
            if (stream == null) throw new IOException("cannot be opened");
            ImageReader reader = readerOf(stream);
            try {
                return decode(reader, stream, losses);
            } catch (EOFException e) {
                throw new IOException("is cut short", e);
            } catch (IIOException e) {
                throw new IOException(reason(e), e);
            } catch (RuntimeException e) {  // readers stumble over broken files in many ways
                throw new IOException("cannot be decoded: the file is damaged", e);
            } finally {
                reader.dispose();
            }
        }
    }

    /** The field's plug-in before the JDK's own for the same format. */
    private static ImageReader readerOf(ImageInputStream stream) throws IOException {
        ImageReader first = null;
        for (Iterator<ImageReader> readers = ImageIO.getImageReaders(stream); readers.hasNext();) {
            ImageReader reader = readers.next();
            if (isPlugin(reader)) return reader;
            if (first == null) first = reader;
        }
        if (first == null) throw new IOException("is not a picture of a kind that can be read (JPEG, PNG, TIFF)");
        return first;
    }

    private static BufferedImage decode(ImageReader reader, ImageInputStream stream, Losses losses)
            throws IOException {
        String[] firstWarning = {null};
        reader.addIIOReadWarningListener((source, warning) -> {
            if (firstWarning[0] == null) firstWarning[0] = warning;
        });
        reader.setInput(stream, false, true);
        BufferedImage image = reader.read(0, asStored(reader));
        // Half a photograph would go unnoticed among many.
        if (isCutShort(firstWarning[0])) throw new IOException("is cut short");
        if (reader.getNumImages(true) > 1) losses.add(Losses.kMorePictures);
        return image;
    }

    /** Plug-ins would convert colors themselves, with nothing said of those that are lost. CMYK is left to them. */
    private static ImageReadParam asStored(ImageReader reader) throws IOException {
        ImageReadParam parameters = reader.getDefaultReadParam();
        if (!isPlugin(reader)) return parameters;
        ImageTypeSpecifier stored = reader.getRawImageType(0);
        int space = stored == null ? ColorSpace.TYPE_CMYK : stored.getColorModel().getColorSpace().getType();
        boolean known = space == ColorSpace.TYPE_RGB || space == ColorSpace.TYPE_GRAY;
        if (known) parameters.setDestinationType(stored);
        return parameters;
    }

    private static boolean isPlugin(ImageReader reader) {
        return reader.getClass().getName().startsWith(kPlugins);
    }

    private static boolean isCutShort(String warning) {
        return warning != null && (warning.contains("Truncated") || warning.contains("Premature"));
    }

    private static String reason(IIOException e) {
        for (Throwable cause = e; cause != null; cause = cause.getCause()) {
            if (cause instanceof EOFException) return "is cut short";
        }
        return "cannot be decoded: " + e.getMessage();
    }
}
