package com.quill.inspect;

import java.io.IOException;
import java.util.List;

/**
 * A picture put together from tiles in rows (ISO/IEC 23008-12). Width and height are the picture's, in pixels; the tile
 * size is that of the first tile, 0 when the file does not say.
 */
public record Grid(long itemId, int rows, int columns, long width, long height, long tileWidth, long tileHeight,
        List<Long> tiles) {
    private static final int kWideFieldsFlag = 1;

    static Grid read(ItemTable items, Item item, Problems problems) throws IOException {
        ByteReader in = new ByteReader(items.body(item));
        in.skip(1);  // version
        int width = (in.u8() & kWideFieldsFlag) != 0 ? 4 : 2;
        int rows = in.u8() + 1;
        int columns = in.u8() + 1;
        List<Long> tiles = item.references("dimg");
        if (tiles.size() != rows * columns) {
            problems.add("the grid of item " + item.mId + " has " + tiles.size() + " tiles for " + rows + " x "
                    + columns);
        }
        Item tile = tiles.isEmpty() ? null : items.item(tiles.get(0));
        return new Grid(item.mId, rows, columns, in.uint(width), in.uint(width), extent(tile, "width"),
                extent(tile, "height"), tiles);
    }

    private static long extent(Item tile, String name) {
        Property size = tile == null ? null : tile.property("ispe");
        return size == null ? 0 : (long) size.values().getOrDefault(name, 0L);
    }
}
