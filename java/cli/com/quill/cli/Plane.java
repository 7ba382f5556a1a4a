package com.quill.cli;

import com.quill.media.FrameLayout;
import java.util.List;

/**
 * Where a plane lies in a frame whose rows have no padding, in bytes. A unit is what stays together when the picture is
 * mirrored: a sample, a pair of chroma samples, a pixel.
 */
record Plane(int start, int rowBytes, int rows, int unitBytes) {
    /** The planes of a frame of {@code layout}; with chroma planes its width and height are even. */
    static List<Plane> of(FrameLayout layout) {
        int width = layout.width();
        int height = layout.height();
        int sample = layout.format().sampleBytes();
        Plane first = new Plane(0, width * sample, height, sample);
        int chroma = first.rowBytes * height;
        switch (layout.format()) {
            case RGBA8888:
                return List.of(first);
            case I420:
                int second = chroma + chroma / 4;
                return List.of(first, new Plane(chroma, width / 2, height / 2, 1),
                        new Plane(second, width / 2, height / 2, 1));
            default:
                return List.of(first, new Plane(chroma, width * sample, height / 2, 2 * sample));
        }
    }

    /** Swaps left and right. */
    void mirror(byte[] frame) {
        for (int row = 0; row < rows; ++row) {
            int left = start + row * rowBytes;
            int right = left + rowBytes - unitBytes;
            for (; left < right; left += unitBytes, right -= unitBytes) swapUnits(frame, left, right);
        }
    }

    private void swapUnits(byte[] frame, int left, int right) {
        for (int i = 0; i < unitBytes; ++i) {
            byte kept = frame[left + i];
            frame[left + i] = frame[right + i];
            frame[right + i] = kept;
        }
    }
}
