package com.quill.media;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;

import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

class FrameLayoutTest {
    @ParameterizedTest
    @CsvSource({
        "0, 8, 8, 8, Width 0 is below 1",
        "8, -1, 8, 8, Height -1 is below 1",
        "8, 8, 7, 8, Stride 7 is below the width 8",
        "8, 8, 8, 6, Slice height 6 is below the height 8",
        "8, 8, 32768, 16384, A frame of 32768 x 16384 samples is too large; 536870911 fit",
    })
    void constructor_OutOfRangeArgumentIsNamedWithItsValue(int width, int height, int stride, int sliceHeight,
            String message) {
        Exception e = assertThrows(IllegalArgumentException.class,
                () -> new FrameLayout(width, height, stride, sliceHeight, ColorFormat.NV12));
        assertEquals(message, e.getMessage());
    }

    @Test
    void colorFormat_UnknownCodeIsRefused() {
        assertEquals(ColorFormat.NV21, ColorFormat.ofCode(4));
        assertThrows(IllegalArgumentException.class, () -> ColorFormat.ofCode(5));
        assertThrows(IllegalArgumentException.class, () -> ColorFormat.ofCode(-1));
    }

    @ParameterizedTest
    @CsvSource({
        "I420, 240, 236",  // the second half-pitch row of V lacks four bytes of padding
        "NV12, 240, 231",  // eight of padding, and the V behind the last U
        "NV21, 240, 231",
        "P010, 480, 462",
        "RGBA8888, 640, 640",
    })
    void leastFrameBytes_LeavesOutOnlyWhatACameraDoesNotDeliver(ColorFormat format, long whole, long least) {
        FrameLayout layout = new FrameLayout(8, 10, 16, 10, format);
        assertEquals(whole, layout.frameBytes());
        assertEquals(least, layout.leastFrameBytes());
    }

    @Test
    void evenlyPadded_RoundsStrideAndSliceHeightUp() {
        FrameLayout layout = FrameLayout.evenlyPadded(641, 479, ColorFormat.I420);
        assertEquals(642, layout.stride());
        assertEquals(480, layout.sliceHeight());
        assertEquals(641, layout.width());
        assertEquals(479, layout.height());
    }
}
