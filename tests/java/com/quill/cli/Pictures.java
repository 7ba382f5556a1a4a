package com.quill.cli;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.function.UnaryOperator;
import javax.imageio.ImageIO;

/** Pictures and EXIF blocks made for the tests. */
final class Pictures {
    private static final int kSecondDirectory = 8 + 2 + 2 * 12 + 4;
    private static final int kThumbnail = kSecondDirectory + 2 + 2 * 12 + 4;

    private Pictures() {}

    /** Smooth with a little detail, so that it codes fast; gray: with equal components. */
    static BufferedImage picture(int width, int height, boolean gray) {
        BufferedImage image = new BufferedImage(width, height, BufferedImage.TYPE_3BYTE_BGR);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int color = 255 * x / width << 16 | 255 * y / height << 8 | (x / 16 + y / 16) % 2 * 64;
                image.setRGB(x, y, gray ? 255 * y / height * 0x10101 : color);
            }
        }
        return image;
    }

    static Path writeJpeg(Path path, int width, int height) throws IOException {
        return writeJpeg(path, picture(width, height, false), new byte[0]);
    }

    /** With {@code exif}, unless it is empty, as the segment behind the start of the image. */
    static Path writeJpeg(Path path, BufferedImage image, byte[] exif) throws IOException {
        ImageIO.write(image, "jpeg", path.toFile());
        String size = "" + (char) (exif.length + 2 >> 8) + (char) (exif.length + 2 & 0xff);
        String segment = exif.length == 0 ? "" : "\u00ff\u00e1" + size + new String(exif, StandardCharsets.ISO_8859_1);
        return change(path, jpeg -> jpeg.substring(0, 2) + segment + jpeg.substring(2));
    }

    /** Changes a file, whose bytes are the characters of a text. */
    static Path change(Path path, UnaryOperator<String> change) throws IOException {
        String text = Files.readString(path, StandardCharsets.ISO_8859_1);
        return Files.writeString(path, change.apply(text), StandardCharsets.ISO_8859_1);
    }

    /** An EXIF block with the width and the orientation and, unless it is empty, a thumbnail. */
    static byte[] exif(ByteOrder order, int orientation, byte... thumbnail) {
        boolean second = thumbnail.length > 0;
        ByteBuffer block = ByteBuffer.allocate(6 + (second ? kThumbnail + thumbnail.length : kSecondDirectory));
        block.put(("Exif\0\0" + (order == ByteOrder.BIG_ENDIAN ? "MM" : "II")).getBytes(StandardCharsets.US_ASCII));
        block.order(order).putShort((short) 42).putInt(8).putShort((short) 2);
        block.putShort((short) 0x0100).putShort((short) 4).putInt(1).putInt(640);
        block.putShort((short) 0x0112).putShort((short) 3).putInt(1).putShort((short) orientation).putShort((short) 0);
        if (!second) return block.array();
        block.putInt(kSecondDirectory).putShort((short) 2);
        block.putShort((short) 0x0201).putShort((short) 4).putInt(1).putInt(kThumbnail);
        block.putShort((short) 0x0202).putShort((short) 4).putInt(1).putInt(thumbnail.length);
        return block.putInt(0).put(thumbnail).array();
    }
}
