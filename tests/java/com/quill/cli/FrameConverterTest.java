package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import com.quill.media.ColorFormat;
import com.quill.media.FrameLayout;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.util.Arrays;
import org.junit.jupiter.api.Test;

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
        assertArrayEquals(bytes(0, 255, 76, 76, 0, 255, 76, 76, 128, 128, 255, 85), convert(pixels, ColorFormat.NV21));
        int[] tenBits = {0, 1023, 306, 306, 0, 1023, 306, 306, 512, 512, 339, 1023};
        ByteBuffer p010 = ByteBuffer.wrap(convert(pixels, ColorFormat.P010)).order(ByteOrder.LITTLE_ENDIAN);
        for (int sample : tenBits) assertEquals(sample << 6, p010.getShort() & 0xffff);
        byte[] row = bytes(0, 0, 0, 255, 255, 255, 255, 255, 255, 0, 0, 255, 255, 0, 0, 255);
        byte[] rgba = convert(pixels, ColorFormat.RGBA8888);
        assertArrayEquals(row, Arrays.copyOfRange(rgba, 0, 16));
        assertArrayEquals(row, Arrays.copyOfRange(rgba, 16, 32));
    }

    @Test
    void mirrored_SwapsLeftAndRight() {
        int[][] pixels = {{1, 2, 3}, {4, 5, 6}};
        int[] row = new int[3];
        new ArrayRows(pixels).mirrored().read(1, row);
        assertArrayEquals(new int[] {6, 5, 4}, row);
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
