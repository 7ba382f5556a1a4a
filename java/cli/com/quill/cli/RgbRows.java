package com.quill.cli;

/** A picture's pixels, a row at a time, in sRGB. */
interface RgbRows {
    int width();

    int height();

    /** Puts row {@code y} as 0xRRGGBB into the first {@code width()} elements of {@code row}; upper bytes are free. */
    void read(int y, int[] row);

    /** The same picture as a mirror shows it: left and right swapped. */
    default RgbRows mirrored() {
        RgbRows plain = this;
        return new RgbRows() {
            @Override
            public int width() {
                return plain.width();
            }

            @Override
            public int height() {
                return plain.height();
            }

            @Override
            public void read(int y, int[] row) {
                plain.read(y, row);
                for (int left = 0, right = width() - 1; left < right; ++left, --right) {
                    int pixel = row[left];
                    row[left] = row[right];
                    row[right] = pixel;
                }
            }
        };
    }
}
