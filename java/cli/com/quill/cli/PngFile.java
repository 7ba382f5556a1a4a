package com.quill.cli;

import com.drew.imaging.png.PngChunk;
import com.drew.imaging.png.PngChunkReader;
import com.drew.imaging.png.PngChunkType;
import com.drew.imaging.png.PngProcessingException;
import com.drew.lang.SequentialReader;
import com.drew.lang.StreamReader;
import com.quill.inspect.ExifBlock;
import java.io.BufferedInputStream;
import java.io.ByteArrayInputStream;
import java.io.EOFException;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.HashSet;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.zip.InflaterInputStream;

/** The chunks of a PNG file (ISO/IEC 15948) beside its pixels. */
final class PngFile implements Metadata {
    private static final int kMaxProfileBytes = 16 << 20;
    private static final double kUsualGamma = 45455;
    private static final Set<String> kTexts = Set.of("tEXt", "zTXt", "iTXt");
    private static final Set<String> kRead = Set.of("eXIf", "iCCP", "sRGB", "gAMA", "cICP", "acTL");

    private final Map<String, byte[]> mChunks = new TreeMap<>();  // by type, the first of each
    private final Set<String> mTexts;                             // what its texts are

    /** An IOException says why the file cannot be used: it ends before its last chunk, for one. */
    PngFile(Path file) throws IOException {
        Losses texts = new Losses();
        try (InputStream stream = new BufferedInputStream(Files.newInputStream(file))) {
            for (PngChunk chunk : new PngChunkReader().extract(reader(stream, Files.size(file)), types())) {
                String type = chunk.getType().getIdentifier();
                if (kTexts.contains(type)) texts.add(kindOf(chunk.getBytes()));
                mChunks.putIfAbsent(type, chunk.getBytes());
            }
        } catch (EOFException e) {
            throw new IOException("is cut short", e);
        } catch (PngProcessingException e) {
            throw new IOException("cannot be decoded: " + e.getMessage(), e);
        }
        mTexts = texts.kinds();
    }

    /** Makes no room for a chunk that claims to be larger than the file. */
    private static SequentialReader reader(InputStream stream, long size) {
        return new StreamReader(stream) {
            @Override
            public byte[] getBytes(int count) throws IOException {
                if (count > size - getPosition()) throw new EOFException("a chunk leads behind the end");
                return super.getBytes(count);
            }
        };
    }

    @Override
    public byte[] exif() {
        byte[] tiff = mChunks.get("eXIf");
        return tiff == null ? null : ExifBlock.ofTiff(tiff);
    }

    /** Behind its name and a byte for the method; compressed. */
    @Override
    public byte[] profile() {
        byte[] chunk = mChunks.get("iCCP");
        if (chunk == null) return null;
        int start = keyword(chunk).length() + 2;
        if (start >= chunk.length) return new byte[0];
        ByteArrayInputStream compressed = new ByteArrayInputStream(chunk, start, chunk.length - start);
        try (InputStream profile = new InflaterInputStream(compressed)) {
            return profile.readNBytes(kMaxProfileBytes);
        } catch (IOException e) {
            return new byte[0];  // which no reader of profiles takes for one
        }
    }

    @Override
    public void addLosses(Losses losses) {
        mTexts.forEach(losses::add);
        if (mChunks.containsKey("acTL")) losses.add(Losses.kMorePictures);
        if (mChunks.containsKey("iCCP") || mChunks.containsKey("sRGB")) return;
        if (mChunks.containsKey("cICP")) losses.add("a color space in a cICP chunk (taken for sRGB)");
        if (hasOtherGamma()) losses.add("a gamma of its own (taken for sRGB)");
    }

    private boolean hasOtherGamma() {
        byte[] chunk = mChunks.get("gAMA");
        if (chunk == null || chunk.length < 4) return false;
        int gamma = ByteBuffer.wrap(chunk).getInt();
        return Math.abs(gamma / kUsualGamma - 1) > 0.05;
    }

    private static Set<PngChunkType> types() throws PngProcessingException {
        Set<PngChunkType> types = new HashSet<>();
        for (String type : kRead) types.add(new PngChunkType(type));
        for (String type : kTexts) types.add(new PngChunkType(type, true));
        return types;
    }

    private static String kindOf(byte[] text) {
        switch (keyword(text)) {
            case "XML:com.adobe.xmp":
            case "Raw profile type xmp":
                return Losses.kXmp;
            case "Raw profile type iptc":
            case "Raw profile type 8bim":
                return Losses.kIptc;
            default:
                return "text";
        }
    }

    /** What a text or a profile begins with, up to a zero. */
    private static String keyword(byte[] chunk) {
        int end = 0;
        while (end < chunk.length && chunk[end] != 0) ++end;
        return new String(chunk, 0, end, StandardCharsets.ISO_8859_1);
    }
}
