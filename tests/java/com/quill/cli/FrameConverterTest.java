package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.util.Arrays;
import java.util.Random;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;

class FrameConverterTest {
    private static byte[] convert(int[][] pixels, ColorFormat format) {
        return FrameConverter.convert(new ArrayRows(pixels),
                FrameLayout.evenlyPadded(pixels[0].length, pixels.length, format));
    }

    @Test
    void convert_OddSizeRepeatsTheEdgesInEveryPlane() {
        int[][] pixels = {{0x000000, 0xffffff, 0xff0000}};
        // Three by one becomes four by two; the right chroma sample is that of the red edge alone.
        assertArrayEquals(bytes(0, 255, 76, 76, 0, 255, 76, 76, 128, 85, 128, 255), convert(pixels, ColorFormat.I420));
        assertArrayEquals(bytes(0, 255, 76, 76, 0, 255, 76, 76, 128, 128, 85, 255), convert(pixels, ColorFormat.NV12));
        byte[] row = bytes(0, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 255, 255, 0, 0, 255);
        byte[] rgba = convert(pixels, ColorFormat.RGBA8888);
        assertArrayEquals(row, Arrays.copyOfRange(rgba, 0, 16));
        assertArrayEquals(row, Arrays.copyOfRange(rgba, 16, 32));
    }

    @ParameterizedTest
    @EnumSource(names = {"I420", "NV12", "NV21", "P010"})
    void convert_MatchesTheMatrixInFloatingPoint(ColorFormat format) {
        int[][] pixels = noise(10, 6);
        byte[] frame = convert(pixels, format);
        boolean deep = format == ColorFormat.P010;
        double scale = deep ? 1023 / 255.0 : 1;
        for (int y = 0; y < 6; ++y) {
            for (int x = 0; x < 10; ++x) {
                int rgb = pixels[y][x];
                double luma = 0.299 * (rgb >> 16) + 0.587 * (rgb >> 8 & 255) + 0.114 * (rgb & 255);
                assertEquals(luma * scale, sample(frame, y * 10 + x, deep), 0.501);
            }
        }
        for (int y = 0; y < 6; y += 2) {
            for (int x = 0; x < 10; x += 2) {
                double[] mean = new double[3];
                for (int i = 0; i < 12; ++i) {
                    mean[i % 3] += (pixels[y + i / 6][x + i / 3 % 2] >> 8 * (2 - i % 3) & 255) / 4.0;
                }
                double luma = 0.299 * mean[0] + 0.587 * mean[1] + 0.114 * mean[2];
                double middle = deep ? 512 : 128;
                assertEquals((mean[2] - luma) / 1.772 * scale + middle,
                        sample(frame, cbPosition(format, x, y), deep), 0.501);
                assertEquals((mean[0] - luma) / 1.402 * scale + middle,
                        sample(frame, crPosition(format, x, y), deep), 0.501);
            }
        }
    }

    @Test
    void mirrored_SwapsLeftAndRight() {
        int[][] pixels = {{1, 2, 3}, {4, 5, 6}};
        int[] row = new int[3];
        new ArrayRows(pixels).mirrored().read(1, row);
        assertArrayEquals(new int[] {6, 5, 4}, row);
    }

    private static int cbPosition(ColorFormat format, int x, int y) {
        if (format == ColorFormat.I420) return 60 + y / 2 * 5 + x / 2;
        return 60 + y / 2 * 10 + x + (format == ColorFormat.NV21 ? 1 : 0);
    }

    private static int crPosition(ColorFormat format, int x, int y) {
        if (format == ColorFormat.I420) return 75 + y / 2 * 5 + x / 2;
        return 60 + y / 2 * 10 + x + (format == ColorFormat.NV21 ? 0 : 1);
    }

    private static int sample(byte[] frame, int at, boolean deep) {
        if (!deep) return frame[at] & 0xff;
        return ((frame[2 * at + 1] & 0xff) << 8 | frame[2 * at] & 0xff) >> 6;
    }

    private static int[][] noise(int width, int height) {
        Random random = new Random(width * 31L + height);
        int[][] pixels = new int[height][width];
        for (int[] row : pixels) {
            for (int x = 0; x < width; ++x) row[x] = random.nextInt(1 << 24);
        }
        return pixels;
    }

    private static byte[] bytes(int... values) {
        byte[] bytes = new byte[values.length];
        for (int i = 0; i < values.length; ++i) bytes[i] = (byte) values[i];
        return bytes;
    }

    private static final class ArrayRows implements RgbRows {
        private final int[][] mPixels;

        ArrayRows(int[][] pixels) {
            mPixels = pixels;
        }

        @Override
        public int width() {
            return mPixels[0].length;
        }

        @Override
        public int height() {
            return mPixels.length;
        }

        @Override
        public void read(int y, int[] row) {
            System.arraycopy(mPixels[y], 0, row, 0, width());
        }
    }
}
