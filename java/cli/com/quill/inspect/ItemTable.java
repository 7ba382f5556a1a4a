package com.quill.inspect;

import java.io.IOException;
import java.util.ArrayList;
import java.util.Collection;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** The items that a 'meta' box (ISO/IEC 14496-12) lists, with their places, references and properties. */
final class ItemTable {
    private static final int kMaxItems = 1 << 16;
    private static final int kMaxExtents = 1 << 18;
    private static final int kMaxReferences = 1 << 20;
    private static final int kMaxUses = 1 << 19;

    private static final int kHiddenFlag = 1;
    private static final int kWideIndexFlag = 1;
    private static final int kTypedEntryVersion = 2;  // of 'infe': with an item type
    private static final int kWideEntryVersion = 3;   // with an item id of 32 bits too
    private static final int kConstructionMask = 0xf;
    private static final int kLastLocationVersion = 2;

    private final HeifSource mSource;
    private final Box mMeta;
    private final Problems mProblems;
    private final Map<Long, Item> mItems = new LinkedHashMap<>();
    private int mExtents;
    private int mReferences;
    private int mUses;

    /** A box's payload behind its version and flags. */
    private record FullBox(int version, int flags, ByteReader in) {}

    private interface FullBoxStep {
        void run(FullBox box) throws IOException;
    }

    private ItemTable(HeifSource source, Box meta, Problems problems) {
        mSource = source;
        mMeta = meta;
        mProblems = problems;
    }

    static ItemTable read(HeifSource source, Box meta, Problems problems) throws IOException {
        ItemTable table = new ItemTable(source, meta, problems);
        table.readInfos();
        table.readPart(meta, "pitm", table::readPrimary);
        table.readPart(meta, "iloc", table::readLocations);
        table.readReferences();
        table.readProperties();
        return table;
    }

    Collection<Item> items() {
        return mItems.values();
    }

    /** The item of this id, or null. */
    Item item(long id) {
        return mItems.get(id);
    }

    private FullBox load(Box box) throws IOException {
        ByteReader in = new ByteReader(mSource.load(box.payloadOffset(), box.payloadSize()));
        int version = in.u8();
        return new FullBox(version, in.u8() << 16 | in.u16(), in);
    }

    private void readPart(Box parent, String type, FullBoxStep step) throws IOException {
        Box box = parent.child(type);
        if (box == null) {
            mProblems.add("there is no box '" + type + "'");
            return;
        }
        mProblems.guard("the box '" + type + "'", () -> step.run(load(box)));
    }

    // ---- what there is

    private void readInfos() throws IOException {
        Box infos = mMeta.child("iinf");
        if (infos == null) {
            mProblems.add("there is no box 'iinf': the file lists no items");
            return;
        }
        for (Box box : infos.children()) {
            if (!box.type().equals("infe")) continue;
            if (mItems.size() == kMaxItems) {
                mProblems.add("there are more than " + kMaxItems + " items: the others are left out");
                return;
            }
            mProblems.guard("the box 'infe' at " + box.offset(), () -> addItem(load(box)));
        }
    }

    private void addItem(FullBox info) throws FormatException {
        ByteReader in = info.in();
        long id = info.version() >= kWideEntryVersion ? in.u32() : in.u16();
        in.skip(2);  // protection
        String type = info.version() >= kTypedEntryVersion ? in.fourCc() : "????";
        String name = in.text();
        String contentType = type.equals("mime") || info.version() < kTypedEntryVersion ? in.text() : null;
        boolean hidden = info.version() >= kTypedEntryVersion && (info.flags() & kHiddenFlag) != 0;
        Item item = new Item(id, Printable.of(type), hidden, name, contentType);
        if (mItems.putIfAbsent(id, item) != null) throw new FormatException("lists item " + id + " again");
    }

    private void readPrimary(FullBox box) throws FormatException {
        Item item = known("pitm", box.version() == 0 ? box.in().u16() : box.in().u32());
        if (item != null) item.mPrimary = true;
    }

    private Item known(String box, long id) {
        Item item = mItems.get(id);
        if (item == null) mProblems.add("the box '" + box + "' names item " + id + ", which is not listed");
        return item;
    }

    // ---- where it is

    /** Widths in bytes of the fields of 'iloc'. */
    private record FieldWidths(int offset, int length, int base, int index) {}

    private void readLocations(FullBox box) throws IOException {
        if (box.version() > kLastLocationVersion) throw new FormatException("has the unknown version " + box.version());
        ByteReader in = box.in();
        int sizes = in.u16();
        boolean indexed = box.version() > 0;
        int index = indexed ? sizes & 0xf : 0;
        FieldWidths widths = new FieldWidths(sizes >> 12, sizes >> 8 & 0xf, sizes >> 4 & 0xf, index);
        int idWidth = box.version() < 2 ? 2 : 4;
        for (long left = in.uint(idWidth); left > 0; --left) {
            long id = in.uint(idWidth);
            int construction = indexed ? in.u16() & kConstructionMask : Item.kInFile;
            boolean here = in.u16() == 0;
            readExtents(in, widths, known("iloc", id), construction, here);
        }
    }

    private void readExtents(ByteReader in, FieldWidths widths, Item item, int construction, boolean here)
            throws FormatException {
        if (construction > Item.kInOtherItem) throw new FormatException("has the construction method " + construction);
        long base = in.uint(widths.base());
        for (int left = in.u16(); left > 0; --left) {
            if (++mExtents > kMaxExtents) throw new FormatException("has more than " + kMaxExtents + " extents");
            in.uint(widths.index());
            long offset = in.uint(widths.offset());
            long size = in.uint(widths.length());
            if (item == null) continue;
            if (base > Long.MAX_VALUE - offset) throw new FormatException("has an offset beyond 63 bits");
            item.mConstruction = construction;
            if (here) addExtent(item, base + offset, size, widths.length() == 0);
        }
        if (item != null && !here) mProblems.add("the body of item " + item.mId + " is in another file");
    }

    /** {@code open}: without a length an extent goes on to the end of what it lies in. */
    private void addExtent(Item item, long offset, long size, boolean open) {
        if (item.mConstruction == Item.kInOtherItem) {
            item.mExtents.add(new Item.Extent(offset, size));
            return;
        }
        Box data = item.mConstruction == Item.kInItemData ? mMeta.child("idat") : null;
        long start = data == null ? 0 : data.payloadOffset();
        long end = item.mConstruction == Item.kInFile ? mSource.size() : data == null ? 0 : data.end();
        if (offset > end - start || !open && size > end - start - offset) {
            mProblems.add("the body of item " + item.mId + " lies outside the " + item.construction() + ": " + size
                    + " bytes at " + offset);
            return;
        }
        item.mExtents.add(new Item.Extent(start + offset, open ? end - start - offset : size));
    }

    /** The body of an item, which is a FormatException when it cannot be read. */
    byte[] body(Item item) throws IOException {
        if (item.mConstruction == Item.kInOtherItem) throw new FormatException("lies in another item");
        if (item.mExtents.isEmpty()) throw new FormatException("is not there");
        if (item.size() > HeifSource.kMaxPiece) throw new FormatException("is too large: " + item.size() + " bytes");
        byte[] body = new byte[(int) item.size()];
        int at = 0;
        for (Item.Extent extent : item.mExtents) {
            byte[] piece = mSource.load(extent.offset(), extent.size());
            System.arraycopy(piece, 0, body, at, piece.length);
            at += piece.length;
        }
        return body;
    }

    // ---- what it has to do with others

    private void readReferences() throws IOException {
        Box references = mMeta.child("iref");
        if (references == null) return;
        boolean[] wide = {false};
        mProblems.guard("the box 'iref'", () -> wide[0] = mSource.load(references.payloadOffset(), 1)[0] != 0);
        for (Box box : references.children()) {
            mProblems.guard("the reference '" + box.type() + "' at " + box.offset(),
                    () -> addReference(box, wide[0] ? 4 : 2));
        }
    }

    private void addReference(Box box, int idWidth) throws IOException {
        ByteReader in = new ByteReader(mSource.load(box.payloadOffset(), box.payloadSize()));
        Item from = known("iref", in.uint(idWidth));
        int count = in.u16();
        if (in.remaining() < count * idWidth) throw new FormatException("ends too early");
        mReferences += count;
        if (mReferences > kMaxReferences) throw new FormatException("is one too many");
        long[] to = new long[count];
        for (int i = 0; i < count; ++i) to[i] = in.uint(idWidth);
        if (from != null) from.mReferences.add(new Item.Reference(box.type(), to));
    }

    private void readProperties() throws IOException {
        Box parent = mMeta.child("iprp");
        Box container = parent == null ? null : parent.child("ipco");
        if (container == null) {
            mProblems.add("there is no box 'ipco': the items have no properties");
            return;
        }
        List<Property> properties = Properties.read(mSource, container, mProblems);
        for (Box box : parent.children()) {
            if (box.type().equals("ipma")) {
                mProblems.guard("the box 'ipma'", () -> readUses(load(box), properties));
            }
        }
    }

    private void readUses(FullBox box, List<Property> properties) throws FormatException {
        ByteReader in = box.in();
        int width = (box.flags() & kWideIndexFlag) != 0 ? 2 : 1;
        int essential = 1 << (8 * width - 1);
        for (long left = in.u32(); left > 0; --left) {
            Item item = known("ipma", box.version() == 0 ? in.u16() : in.u32());
            for (int uses = in.u8(); uses > 0; --uses) {
                int use = (int) in.uint(width);
                int index = use & ~essential;
                if (++mUses > kMaxUses) throw new FormatException("has more than " + kMaxUses + " associations");
                if (index > properties.size()) {
                    mProblems.add("item " + (item == null ? "?" : item.mId) + " has a property " + index + " of "
                            + properties.size());
                } else if (index > 0 && item != null) {
                    item.mProperties.add(new Item.Use(properties.get(index - 1), (use & essential) != 0));
                }
            }
        }
    }
}
