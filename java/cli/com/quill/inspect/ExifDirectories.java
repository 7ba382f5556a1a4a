package com.quill.inspect;

import java.nio.ByteOrder;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.List;
import java.util.Map;

/**
 * Reads EXIF items (ISO/IEC 23008-12, annex A). Each directory is read once, whatever the offsets say, so a
 * block cannot lead in circles.
 */
final class ExifDirectories {
    private static final int kOffsetFieldSize = 4;
    private static final int kTiffHeaderSize = 8;
    private static final int kTiffMagic = 42;
    private static final int kValueFieldSize = 4;
    private static final int kMaxNotes = 20;

    private final ByteReader mTiff;
    private final List<ExifDirectory> mDirectories = new ArrayList<>();
    private final List<String> mNotes = new ArrayList<>();

    private ExifDirectories(byte[] tiff, ByteOrder order) {
        mTiff = new ByteReader(tiff).order(order);
    }

    /** A FormatException when {@code body}, an item's body, does not lead to a TIFF header. */
    static ExifData read(long itemId, byte[] body) throws FormatException {
        ByteReader in = new ByteReader(body);
        long at = in.u32();
        byte[] sample = Arrays.copyOfRange(body, kOffsetFieldSize, body.length);
        if (!new ByteReader(sample).holds(at, kTiffHeaderSize)) {
            throw new FormatException("has no TIFF header: it should be at " + at + " of " + sample.length + " bytes");
        }
        byte[] tiff = Arrays.copyOfRange(sample, (int) at, sample.length);
        ExifDirectories reader = new ExifDirectories(tiff, orderOf(tiff));
        reader.readChain();
        ExifDirectory second = reader.directory("IFD1");
        Thumbnail thumbnail = second == null ? null : Thumbnail.read(sample, at, second);
        return new ExifData(itemId, sample, at, orderOf(tiff), reader.mDirectories, thumbnail, reader.mNotes);
    }

    /** The byte order that a TIFF structure begins with. */
    static ByteOrder orderOf(byte[] tiff) throws FormatException {
        if (tiff.length < kTiffHeaderSize) throw new FormatException("has no TIFF header where it should be");
        boolean little = tiff[0] == 'I' && tiff[1] == 'I';
        boolean big = tiff[0] == 'M' && tiff[1] == 'M';
        if (!little && !big) throw new FormatException("has no TIFF header where it should be");
        return little ? ByteOrder.LITTLE_ENDIAN : ByteOrder.BIG_ENDIAN;
    }

    private void readChain() throws FormatException {
        int magic = mTiff.seek(2).u16();
        if (magic != kTiffMagic) note("the TIFF header has " + magic + " in the place of " + kTiffMagic);
        long next = readDirectory("IFD0", mTiff.u32(), ExifTags.kImage);
        readPointedTo("Exif", "IFD0", ExifTags.kExifPointer, ExifTags.kImage);
        readPointedTo("Interop", "Exif", ExifTags.kInteropPointer, ExifTags.kInterop);
        readPointedTo("GPS", "IFD0", ExifTags.kGpsPointer, ExifTags.kGps);
        if (next != 0) readDirectory("IFD1", next, ExifTags.kImage);
    }

    private void readPointedTo(String name, String parentName, int tag, Map<Integer, String> names)
            throws FormatException {
        ExifDirectory parent = directory(parentName);
        long at = parent == null ? -1 : parent.number(tag);
        if (at >= 0) readDirectory(name, at, names);
    }

    private ExifDirectory directory(String name) {
        for (ExifDirectory directory : mDirectories) {
            if (directory.name().equals(name)) return directory;
        }
        return null;
    }

    /** Adds the directory as far as it is there; returns the offset of the next one, 0 for none. */
    private long readDirectory(String name, long at, Map<Integer, String> names) throws FormatException {
        if (!mTiff.holds(at, 2)) {
            note(name + " should be at " + at + ", outside the block");
            return 0;
        }
        TiffDirectory directory = TiffDirectory.read(mTiff, at);
        int there = directory.fields().size();
        if (there < directory.claimed()) {
            note(name + ": only " + there + " of " + directory.claimed() + " entries are read");
        }
        List<ExifEntry> entries = new ArrayList<>();
        for (TiffDirectory.Field field : directory.fields()) entries.add(readEntry(name, field, names));
        mDirectories.add(new ExifDirectory(name, at, entries));
        return directory.next();
    }

    private ExifEntry readEntry(String directory, TiffDirectory.Field field, Map<Integer, String> names)
            throws FormatException {
        int tag = field.tag();
        long count = field.count();
        ExifValues.Type type = ExifValues.Type.of(field.type());
        if (type == null) {
            return new ExifEntry(tag, names.get(tag), Integer.toString(field.type()), count, "(of an unknown type)", -1);
        }
        long size = count * type.mSize;  // at most 2^35
        mTiff.seek(field.valueAt());
        long valueAt = size <= kValueFieldSize ? mTiff.position() : mTiff.u32();
        if (!mTiff.holds(valueAt, size)) {
            note(directory + ": the value of tag 0x" + Integer.toHexString(tag) + " lies outside the block");
            return new ExifEntry(tag, names.get(tag), type.name(), count, "(outside the block)", -1);
        }
        String text = ExifValues.text(mTiff.seek(valueAt), type, count);
        long number = type.isUnsignedInteger() && count > 0 ? mTiff.seek(valueAt).uint(type.mSize) : -1;
        return new ExifEntry(tag, names.get(tag), type.name(), count, text, number);
    }

    private void note(String text) {
        if (mNotes.size() < kMaxNotes) mNotes.add(text);
    }
}
