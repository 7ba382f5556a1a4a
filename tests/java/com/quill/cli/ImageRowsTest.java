package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;

import java.awt.image.BufferedImage;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

class ImageRowsTest {
    private static final int kWidth = 3;
    private static final int kHeight = 130;  // more than two of the bands that drawing uses

    private static int[] lastRow(BufferedImage image) {
        int[] row = new int[kWidth];
        ImageRows.of(image).read(kHeight - 1, row);
        for (int x = 0; x < kWidth; ++x) row[x] &= 0xffffff;
        return row;
    }

    @ParameterizedTest
    @ValueSource(ints = {BufferedImage.TYPE_3BYTE_BGR, BufferedImage.TYPE_INT_RGB, BufferedImage.TYPE_4BYTE_ABGR})
    void read_GivesThePixelsOfEveryColorLayout(int type) {
        BufferedImage image = new BufferedImage(kWidth, kHeight, type);
        int[] expected = {0x102030, 0xfe8001, 0x00ff7f};
        for (int x = 0; x < kWidth; ++x) image.setRGB(x, kHeight - 1, 0xff000000 | expected[x]);
        assertArrayEquals(expected, lastRow(image));
    }

    @ParameterizedTest
    @ValueSource(ints = {BufferedImage.TYPE_BYTE_GRAY, BufferedImage.TYPE_USHORT_GRAY})
    void read_GrayKeepsItsStoredValue(int type) {
        BufferedImage image = new BufferedImage(kWidth, kHeight, type);
        int unit = type == BufferedImage.TYPE_USHORT_GRAY ? 257 : 1;
        image.getRaster().setSample(1, kHeight - 1, 0, 100 * unit);
        image.getRaster().setSample(2, kHeight - 1, 0, 255 * unit);
        assertArrayEquals(new int[] {0, 0x646464, 0xffffff}, lastRow(image));
    }

    @Test
    void read_TransparencyShowsWhite() {
        BufferedImage image = new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_INT_ARGB);
        image.setRGB(1, kHeight - 1, 0xff123456);
        assertArrayEquals(new int[] {0xffffff, 0x123456, 0xffffff}, lastRow(image));
    }
}
