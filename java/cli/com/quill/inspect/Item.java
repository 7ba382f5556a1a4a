package com.quill.inspect;

import java.util.ArrayList;
import java.util.List;

/** One item of a HEIF file. Complete once {@link ItemTable} has read its boxes. */
public final class Item {
    /** How an extent's offset counts, by the construction method of the item's location. */
    static final int kInFile = 0;
    static final int kInItemData = 1;
    static final int kInOtherItem = 2;

    private static final String[] kConstructions = {"file", "idat", "item"};

    /** A piece of the body. The offset counts from the start of the file; in another item's body, from its start. */
    record Extent(long offset, long size) {}

    /** What this item says about others: "dimg" (made from them), "cdsc" (describes them), "thmb", "auxl", ... */
    record Reference(String type, long[] to) {}

    /** A property that applies to the item; a reader must understand it when it is essential. */
    record Use(Property property, boolean essential) {}

    final long mId;
    final String mType;  // four characters; "????" for an old kind of entry that does not tell
    final boolean mHidden;
    final String mName;
    final String mContentType;  // null unless the type is "mime"
    boolean mPrimary;
    int mConstruction = kInFile;
    final List<Extent> mExtents = new ArrayList<>();
    final List<Reference> mReferences = new ArrayList<>();
    final List<Use> mProperties = new ArrayList<>();

    Item(long id, String type, boolean hidden, String name, String contentType) {
        mId = id;
        mType = type;
        mHidden = hidden;
        mName = name;
        mContentType = contentType;
    }

    /** Where the body is: "file", "idat" (beside the item table) or "item". */
    String construction() {
        return kConstructions[mConstruction];
    }

    /** Bytes of the body. */
    long size() {
        long size = 0;
        for (Extent extent : mExtents) size = addBounded(size, extent.size());
        return size;
    }

    /** The first property of this type, or null. */
    Property property(String type) {
        for (Use use : mProperties) {
            if (use.property().type().equals(type)) return use.property();
        }
        return null;
    }

    /** The items that references of this type name, in order. */
    List<Long> references(String type) {
        List<Long> ids = new ArrayList<>();
        for (Reference reference : mReferences) {
            if (!reference.type().equals(type)) continue;
            for (long id : reference.to()) ids.add(id);
        }
        return ids;
    }

    /** "3264x2448", or null when the file does not say. */
    String sizeText() {
        Property size = property("ispe");
        return size == null || size.values().isEmpty() ? null : size.text();
    }

    private static long addBounded(long left, long right) {
        return left > Long.MAX_VALUE - right ? Long.MAX_VALUE : left + right;
    }
}
