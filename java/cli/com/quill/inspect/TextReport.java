package com.quill.inspect;

import java.io.PrintWriter;
import java.nio.ByteOrder;
import java.util.ArrayList;
import java.util.HashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;

/** A report for people. What repeats is summarised, long text shortened. */
public final class TextReport {
    private static final int kMaxAlikeBoxes = 3;  // more of a kind in a row become one line
    private static final int kMaxXmpLines = 20;
    private static final int kMaxXmpLineLength = 120;
    private static final int kMaxName = 80;

    private final HeifReport mReport;
    private final PrintWriter mOut;
    private final Set<Long> mTiles = new HashSet<>();

    private TextReport(HeifReport report, PrintWriter out) {
        mReport = report;
        mOut = out;
        for (Grid grid : report.mGrids) mTiles.addAll(grid.tiles());
    }

    public static void write(HeifReport report, PrintWriter out) {
        new TextReport(report, out).write();
        out.flush();
    }

    private void write() {
        line("%s: %d bytes, brand %s, compatible with %s", Printable.of(FileNames.textOf(mReport.mPath)), mReport.mSize,
                mReport.mMajorBrand, String.join(", ", mReport.mCompatibleBrands));
        line("%n%-40s %12s %12s", "Boxes", "offset", "size");
        writeBoxes(mReport.mBoxes, "  ");
        if (!mReport.mItems.isEmpty()) line("%nItems");
        writeItems(new ArrayList<>(mReport.mItems));
        mReport.mGrids.forEach(this::writeGrid);
        mReport.mExif.forEach(this::writeExif);
        mReport.mXmp.forEach(this::writeXmp);
        if (!mReport.mLivePhoto.isEmpty()) line("%n%-40s %12s %12s", "Live photo", "offset", "size");
        for (LivePhotoSection section : mReport.mLivePhoto) {
            line("%-40s %12d %12d", "  " + section.kind().mName, section.offset(), section.size());
        }
        if (!mReport.problems().isEmpty()) line("%nProblems");
        for (String problem : mReport.problems()) line("  %s", problem);
    }

    private void line(String format, Object... arguments) {
        mOut.println(FileNames.printed(String.format(Locale.ROOT, format, arguments).stripTrailing()));
    }

    // ---- boxes

    private void writeBoxes(List<Box> boxes, String indent) {
        for (int i = 0; i < boxes.size(); ) {
            int alike = countAlike(boxes, i);
            Box box = boxes.get(i);
            if (alike > kMaxAlikeBoxes) {
                long size = boxes.get(i + alike - 1).end() - box.offset();
                line("%-40s %12d %12d", indent + box.type() + " (" + alike + " boxes)", box.offset(), size);
            } else {
                alike = 1;
                line("%-40s %12d %12d", indent + box.type(), box.offset(), box.size());
                writeBoxes(box.children(), indent + "  ");
            }
            i += alike;
        }
    }

    private static int countAlike(List<Box> boxes, int first) {
        int end = first;
        while (end < boxes.size() && boxes.get(end).type().equals(boxes.get(first).type())
                && boxes.get(end).children().isEmpty()) {
            ++end;
        }
        return end - first;
    }

    // ---- items

    private void writeItems(List<Item> items) {
        for (int first = 0; first < items.size(); ) {
            int end = first + 1;
            while (end < items.size() && continues(items.get(end - 1), items.get(end))) ++end;
            writeAlike(items.subList(first, end));
            first = end;
        }
    }

    /** Whether two items differ in nothing but their number and body. */
    private boolean continues(Item left, Item right) {
        return right.mId == left.mId + 1 && left.mType.equals(right.mType) && left.mHidden == right.mHidden
                && left.mName.equals(right.mName) && !left.mPrimary && !right.mPrimary
                && left.mReferences.isEmpty() && right.mReferences.isEmpty()
                && left.mConstruction == right.mConstruction && left.mProperties.equals(right.mProperties)
                && left.mContentType == null && right.mContentType == null
                && mTiles.contains(left.mId) == mTiles.contains(right.mId);
    }

    private void writeAlike(List<Item> items) {
        Item item = items.get(0);
        StringBuilder head = new StringBuilder("  ").append(mTiles.contains(item.mId) ? "tile" : "item");
        head.append(items.size() == 1 ? " " + item.mId : "s " + item.mId + "-" + items.get(items.size() - 1).mId);
        head.append(": ").append(item.mType);
        if (item.sizeText() != null) head.append(' ').append(item.sizeText());
        if (item.mPrimary) head.append(" primary");
        if (item.mHidden) head.append(" hidden");
        if (!item.mName.isEmpty()) head.append(" \"").append(plain(item.mName)).append('"');
        if (item.mContentType != null) head.append(' ').append(plain(item.mContentType));
        line("%s, %s", head, place(items));
        for (Item.Use use : item.mProperties) {
            String essential = use.essential() ? "  (essential)" : "";
            line("      %s  %s%s", use.property().type(), use.property().text(), essential);
        }
        for (Item.Reference reference : item.mReferences) {
            List<Long> ids = new ArrayList<>();
            for (long id : reference.to()) ids.add(id);
            line("      %s  -> %s", reference.type(), IdRanges.text(ids));
        }
    }

    private static String plain(String text) {
        return Printable.shortened(Printable.of(text), kMaxName);
    }

    private static String place(List<Item> items) {
        long size = 0;
        int extents = 0;
        for (Item item : items) {
            size += item.size();
            extents += item.mExtents.size();
        }
        Item first = items.get(0);
        if (extents == 0) return "no body";
        String where = first.mConstruction == Item.kInOtherItem ? "another item"
                : first.mConstruction == Item.kInItemData ? "idat" : "the file";
        String pieces = extents == items.size() ? "" : " in " + extents + " pieces";
        String from = first.mExtents.isEmpty() ? "" : " from " + first.mExtents.get(0).offset();
        return size + " bytes in " + where + from + pieces;
    }

    private void writeGrid(Grid grid) {
        line("%nGrid of item %d", grid.itemId());
        String tile = grid.tileWidth() == 0 ? "of unknown size" : grid.tileWidth() + "x" + grid.tileHeight();
        line("  rows: %d, columns: %d, tiles: %s, picture: %dx%d", grid.rows(), grid.columns(), tile, grid.width(),
                grid.height());
    }

    // ---- metadata

    private void writeExif(ExifData exif) {
        line("%nEXIF of item %d, %d bytes", exif.itemId(), exif.sample().length);
        line("  TIFF header at %d, %s", exif.tiffOffset(),
                exif.order() == ByteOrder.LITTLE_ENDIAN ? "little-endian (II)" : "big-endian (MM)");
        for (ExifDirectory directory : exif.directories()) {
            line("  %s at %d, %d entries", directory.name(), directory.offset(), directory.entries().size());
            for (ExifEntry entry : directory.entries()) {
                String name = entry.name() == null ? "" : entry.name();
                line("    0x%04x %-28s %-9s %s", entry.tag(), name, entry.type(), entry.value());
            }
        }
        if (exif.thumbnail() != null) writeThumbnail(exif.thumbnail());
        for (String note : exif.notes()) line("  note: %s", note);
    }

    private void writeThumbnail(Thumbnail thumbnail) {
        String place = thumbnail.offset() < 0 ? "" : " at " + thumbnail.offset() + " of the block";
        String size = thumbnail.size() < 0 ? "" : ", " + thumbnail.size() + " bytes";
        String picture = thumbnail.problem() == null ? "JPEG " + thumbnail.width() + "x" + thumbnail.height()
                : "cannot be read: it " + thumbnail.problem();
        line("  thumbnail%s%s, %s", place, size, picture);
    }

    private void writeXmp(XmpPacket xmp) {
        line("%nXMP of item %d, %d bytes", xmp.itemId(), xmp.bytes().length);
        List<String> lines = xmp.text().lines().map(text -> text.replace('\t', ' ').stripTrailing())
                .filter(text -> !text.isEmpty()).limit(kMaxXmpLines + 1).toList();
        for (String text : lines.subList(0, Math.min(lines.size(), kMaxXmpLines))) {
            line("  %s", Printable.of(Printable.shortened(text, kMaxXmpLineLength)));
        }
        if (lines.size() > kMaxXmpLines) line("  ...");
    }
}
