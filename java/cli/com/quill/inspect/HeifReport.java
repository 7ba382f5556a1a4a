package com.quill.inspect;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collection;
import java.util.List;
import java.util.Set;

/**
 * What is in a HEIF file (ISO/IEC 23008-12), as far as it could be read: the one source of every form of output. Memory
 * stays bounded whatever the file says; coded pictures are not read.
 */
public final class HeifReport {
    // Brands of files with pictures as items or as sequences.
    private static final Set<String> kBrands = Set.of("mif1", "mif2", "msf1", "miaf", "heic", "heix", "heim", "heis",
            "hevc", "hevx", "avif", "avis", "jpeg", "avci");
    private static final int kMaxBrandBytes = 1024;
    private static final int kMaxMetadataItems = 16;  // of EXIF and of XMP each

    final Path mPath;
    final long mSize;
    String mMajorBrand;
    final List<String> mCompatibleBrands = new ArrayList<>();
    List<Box> mBoxes = List.of();
    Collection<Item> mItems = List.of();
    final List<Grid> mGrids = new ArrayList<>();
    final List<ExifData> mExif = new ArrayList<>();
    final List<XmpPacket> mXmp = new ArrayList<>();
    List<LivePhotoSection> mLivePhoto = List.of();
    private final Problems mProblems = new Problems();

    private HeifReport(Path path, long size) {
        mPath = path;
        mSize = size;
    }

    /** Reads a regular file. An IOException tells why nothing can be said about it; lesser damage is a problem. */
    public static HeifReport read(Path path) throws IOException {
        try (HeifSource source = new HeifSource(path)) {
            HeifReport report = new HeifReport(path, source.size());
            report.readFile(source);
            return report;
        }
    }

    /** What is wrong with the file; empty for a sound one. */
    public List<String> problems() {
        return mProblems.messages();
    }

    /** The item that is the picture, or null. */
    Item primary() {
        for (Item item : mItems) {
            if (item.mPrimary) return item;
        }
        return null;
    }

    private void readFile(HeifSource source) throws IOException {
        if (mSize == 0) throw new FormatException("is empty");
        mBoxes = BoxTree.read(source, mProblems);
        readBrands(source);
        mLivePhoto = LivePhotoSection.among(mBoxes, mProblems);
        Box meta = Box.first(mBoxes, "meta");
        boolean sequence = Box.first(mBoxes, "moov") != null;
        if (meta == null && !sequence) mProblems.add("there is no box 'meta': the file lists no items");
        if (meta == null) return;
        ItemTable items = ItemTable.read(source, meta, mProblems);
        mItems = items.items();
        for (Item item : mItems) readItem(items, item);
    }

    private void readBrands(HeifSource source) throws IOException {
        if (mBoxes.isEmpty() || !mBoxes.get(0).type().equals("ftyp")) throw new FormatException("is not a HEIF file");
        Box box = mBoxes.get(0);
        ByteReader in = new ByteReader(source.load(box.payloadOffset(), Math.min(box.payloadSize(), kMaxBrandBytes)));
        if (in.remaining() < 8) throw new FormatException("is not a HEIF file: it ends within its first box");
        mMajorBrand = Printable.of(in.fourCc());
        in.skip(4);  // minor version
        while (in.remaining() >= 4) mCompatibleBrands.add(Printable.of(in.fourCc()));
        boolean heif = kBrands.contains(mMajorBrand) || mCompatibleBrands.stream().anyMatch(kBrands::contains);
        if (!heif) throw new FormatException("is not a HEIF file: its brand is '" + mMajorBrand + "'");
    }

    private void readItem(ItemTable items, Item item) throws IOException {
        String what = "the body of item " + item.mId + " (" + item.mType + ")";
        if (item.mType.equals("grid")) {
            mProblems.guard(what, () -> mGrids.add(Grid.read(items, item, mProblems)));
        } else if (item.mType.equals("Exif") && mExif.size() < kMaxMetadataItems) {
            mProblems.guard(what, () -> mExif.add(ExifDirectories.read(item.mId, items.body(item))));
        } else if (XmpPacket.kContentType.equals(item.mContentType) && mXmp.size() < kMaxMetadataItems) {
            mProblems.guard(what, () -> mXmp.add(new XmpPacket(item.mId, items.body(item))));
        }
    }
}
