package com.quill.cli;

import java.awt.image.BufferedImage;
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

    /** Position of {@code text} in {@code bytes}, or -1. */
    static int find(byte[] bytes, String text) {
        return new String(bytes, StandardCharsets.ISO_8859_1).indexOf(text);
    }
}
