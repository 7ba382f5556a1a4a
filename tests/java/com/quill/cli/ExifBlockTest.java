package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import com.quill.inspect.ExifBlock;
import java.nio.ByteOrder;
import java.util.Arrays;
import java.util.stream.Stream;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;

class ExifBlockTest {
    static Stream<ByteOrder> orders() {
        return Stream.of(ByteOrder.LITTLE_ENDIAN, ByteOrder.BIG_ENDIAN);
    }

    @ParameterizedTest
    @MethodSource("orders")
    void setUpright_ChangesTheOrientationAndNothingElse(ByteOrder order) {
        byte[] block = Pictures.exif(order, 8);
        assertEquals(8, new ExifBlock(block).orientation());
        new ExifBlock(block).setUpright();
        assertArrayEquals(Pictures.exif(order, 1), block);
        assertEquals(1, new ExifBlock(Pictures.exif(order, 9)).orientation());
    }

    @ParameterizedTest
    @MethodSource("orders")
    void orientation_BlockCutAnywhereIsReadWithinItsBounds(ByteOrder order) {
        byte[] whole = Pictures.exif(order, 6);
        for (int length = 0; length < whole.length; ++length) {
            byte[] block = Arrays.copyOf(whole, length);
            boolean entryIsWhole = length >= Pictures.orientationAt() + 4;
            assertEquals(entryIsWhole ? 6 : 1, new ExifBlock(block).orientation(), "cut to " + length);
            new ExifBlock(block).setUpright();
        }
    }
}
