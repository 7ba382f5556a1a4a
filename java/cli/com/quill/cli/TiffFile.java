package com.quill.cli;

import com.twelvemonkeys.imageio.metadata.CompoundDirectory;
import com.twelvemonkeys.imageio.metadata.Directory;
import com.twelvemonkeys.imageio.metadata.Entry;
import com.twelvemonkeys.imageio.metadata.tiff.TIFF;
import com.twelvemonkeys.imageio.metadata.tiff.TIFFReader;
import com.twelvemonkeys.imageio.metadata.tiff.TIFFWriter;
import com.quill.inspect.ExifBlock;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Set;
import javax.imageio.ImageIO;
import javax.imageio.stream.ImageInputStream;
import javax.imageio.stream.ImageOutputStream;

/** The first directory of a TIFF file, as far as it is about the photograph and not about how its pixels are stored. */
final class TiffFile implements Metadata {
    private static final int kRating = 0x4746;
    private static final Set<Object> kKept = Set.of(TIFF.TAG_IMAGE_DESCRIPTION, TIFF.TAG_MAKE, TIFF.TAG_MODEL,
            TIFF.TAG_ORIENTATION, TIFF.TAG_X_RESOLUTION, TIFF.TAG_Y_RESOLUTION, TIFF.TAG_RESOLUTION_UNIT,
            TIFF.TAG_SOFTWARE, TIFF.TAG_DATE_TIME, TIFF.TAG_ARTIST, TIFF.TAG_HOST_COMPUTER, TIFF.TAG_COPYRIGHT,
            TIFF.TAG_EXIF_IFD, TIFF.TAG_GPS_IFD, kRating);

    private final Directory mDirectory;
    private final byte[] mExif;

    /** An IOException says why the file cannot be used. */
    TiffFile(Path file) throws IOException {
        try (ImageInputStream stream = ImageIO.createImageInputStream(file.toFile())) {
            Directory all = new TIFFReader().read(stream);
            boolean several = all instanceof CompoundDirectory;
            mDirectory = several ? ((CompoundDirectory) all).getDirectory(0) : all;
            mExif = block(mDirectory);
        } catch (RuntimeException e) {  // the reader stumbles over broken files in many ways
            throw new IOException("cannot be decoded: its directory is damaged", e);
        }
    }

    @Override
    public byte[] exif() {
        return mExif;
    }

    @Override
    public byte[] profile() {
        return null;
    }

    @Override
    public void addLosses(Losses losses) {
        if (mDirectory.getEntryById(TIFF.TAG_XMP) != null) losses.add(Losses.kXmp);
        if (mDirectory.getEntryById(TIFF.TAG_IPTC) != null) losses.add(Losses.kIptc);
    }

    private static byte[] block(Directory directory) throws IOException {
        List<Entry> kept = new ArrayList<>();
        for (Entry entry : directory) {
            if (kKept.contains(entry.getIdentifier())) kept.add(entry);
        }
        if (kept.isEmpty()) return null;
        ByteArrayOutputStream bytes = new ByteArrayOutputStream();
        try (ImageOutputStream stream = ImageIO.createImageOutputStream(bytes)) {
            new TIFFWriter().write(kept, stream);
        }
        return ExifBlock.ofTiff(bytes.toByteArray());
    }
}
