package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;

import java.awt.Color;
import java.awt.color.ColorSpace;
import java.awt.image.BufferedImage;
import java.awt.image.Raster;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import javax.imageio.ImageIO;

/** Pictures and EXIF blocks made for the tests. */
final class Pictures {
    private static final int kExifHeaderSize = 6;

    private Pictures() {}

    /** Smooth with a little detail, so that it codes fast. */
    static BufferedImage picture(int width, int height) {
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_3BYTE_BGR);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                image.setRGB(x, y, 255 * x / width << 16 | 255 * y / height << 8 | (x / 16 + y / 16) % 2 * 64);
            }
        }
        return image;
    }

    static byte[] jpeg(int width, int height) throws IOException {
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        ImageIO.write(picture(width, height), "jpeg", bytes);
        return bytes.toByteArray();
    }

    static Path writeJpeg(Path path, int width, int height) throws IOException {
        return Files.write(path, jpeg(width, height));
    }

    /** A JPEG file with {@code block} as its EXIF segment, right behind the start of the image. */
    static byte[] jpegWithExif(int width, int height, byte[] block) throws IOException {
        byte[] jpeg = jpeg(width, height);
        return ByteBuffer.allocate(jpeg.length + 4 + block.length).put(jpeg, 0, 2).putShort((short) 0xffe1)
                .putShort((short) (block.length + 2)).put(block).put(jpeg, 2, jpeg.length - 2).array();
    }

    /** An EXIF block with two entries: the width, and the orientation at {@link #orientationAt}. */
    static byte[] exif(ByteOrder order, int orientation) {
        ByteBuffer block = ByteBuffer.allocate(kExifHeaderSize + 8 + 2 + 2 * 12 + 4);
        block.put("Exif\0\0".getBytes(StandardCharsets.US_ASCII));
        block.put((order == ByteOrder.BIG_ENDIAN ? "MM" : "II").getBytes(StandardCharsets.US_ASCII)).order(order);
        block.putShort((short) 42).putInt(8).putShort((short) 2);
        block.putShort((short) 0x0100).putShort((short) 4).putInt(1).putInt(640);
        block.putShort((short) 0x0112).putShort((short) 3).putInt(1).putShort((short) orientation);
        return block.array();
    }

    static int orientationAt() {
        return kExifHeaderSize + 8 + 2 + 12 + 8;
    }

    /** What is shown of an image: gray and color by their stored samples, transparency on white. */
    static BufferedImage onWhite(BufferedImage image) {
        BufferedImage shown = new BufferedImage(image.getWidth(), image.getHeight(), BufferedImage.TYPE_INT_RGB);
        shown.createGraphics().drawImage(image, 0, 0, Color.WHITE, null);
        Raster raster = image.getRaster();
        if (image.getColorModel().getColorSpace().getType() != ColorSpace.TYPE_GRAY) return shown;
        int maximum = (1 << image.getColorModel().getComponentSize(0)) - 1;
        for (int i = 0; i < image.getWidth() * image.getHeight(); ++i) {
            int[] samples = raster.getPixel(i % image.getWidth(), i / image.getWidth(), (int[]) null);
            double opacity = samples.length < 2 ? 1 : (double) samples[1] / maximum;
            int gray = (int) Math.round(255 * (1 - opacity) + 255.0 * samples[0] / maximum * opacity);
            shown.setRGB(i % image.getWidth(), i / image.getWidth(), gray * 0x10101);
        }
        return shown;
    }

    static double psnr(BufferedImage expected, BufferedImage actual) {
        assertEquals(expected.getWidth(), actual.getWidth());
        assertEquals(expected.getHeight(), actual.getHeight());
        double squares = 0;
        for (int y = 0; y < expected.getHeight(); ++y) {
            for (int x = 0; x < expected.getWidth(); ++x) {
                int a = expected.getRGB(x, y);
                int b = actual.getRGB(x, y);
                for (int shift = 0; shift < 24; shift += 8) {
                    int difference = (a >> shift & 0xff) - (b >> shift & 0xff);
                    squares += difference * difference;
                }
            }
        }
        double mean = squares / (3.0 * expected.getWidth() * expected.getHeight());
        return 10 * Math.log10(255 * 255 / mean);
    }

    /** Position of {@code text} in {@code bytes}, or -1. */
    static int find(byte[] bytes, String text) {
        return new String(bytes, StandardCharsets.ISO_8859_1).indexOf(text);
    }
}
