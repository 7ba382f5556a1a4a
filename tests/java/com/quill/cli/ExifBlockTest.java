package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;

import java.nio.ByteOrder;
import java.util.Arrays;
import java.util.stream.Stream;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;
import org.junit.jupiter.params.provider.MethodSource;

class ExifBlockTest {
    static Stream<ByteOrder> orders() {
        return Stream.of(ByteOrder.LITTLE_ENDIAN, ByteOrder.BIG_ENDIAN);
    }

    @ParameterizedTest
    @MethodSource("orders")
    void setUpright_ChangesTheOrientationAndNothingElse(ByteOrder order) {
        byte[] block = Pictures.exif(order, 8);
        assertEquals(8, ExifBlock.orientation(block));
        ExifBlock.setUpright(block);
        assertArrayEquals(Pictures.exif(order, 1), block);
    }

    @ParameterizedTest
    @MethodSource("orders")
    void orientation_ValueThatDoesNotExistIsUpright(ByteOrder order) {
        assertEquals(1, ExifBlock.orientation(Pictures.exif(order, 0)));
        assertEquals(1, ExifBlock.orientation(Pictures.exif(order, 9)));
        assertEquals(1, ExifBlock.orientation(null));
    }

    @ParameterizedTest
    @MethodSource("orders")
    void orientation_BlockCutAnywhereIsReadWithinItsBounds(ByteOrder order) {
        byte[] whole = Pictures.exif(order, 6);
        for (int length = 0; length < whole.length; ++length) {
            byte[] block = Arrays.copyOf(whole, length);
            boolean entryIsWhole = length >= Pictures.orientationAt() + 4;
            assertEquals(entryIsWhole ? 6 : 1, ExifBlock.orientation(block), "cut to " + length);
            ExifBlock.setUpright(block);
        }
    }

    @ParameterizedTest
    @CsvSource({"1, false, 0", "2, true, 0", "3, false, 180", "4, true, 180", "5, true, 270", "6, false, 90",
        "7, true, 90", "8, false, 270"})
    void orientation_IsAMirrorAndAClockwiseTurn(int tiff, boolean mirrored, int rotation) {
        assertEquals(mirrored, Orientation.ofTiff(tiff).mMirrored);
        assertEquals(rotation, Orientation.ofTiff(tiff).mRotation);
    }
}
