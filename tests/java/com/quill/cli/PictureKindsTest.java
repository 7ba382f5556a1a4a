package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.twelvemonkeys.imageio.color.ColorSpaces;
import java.awt.Color;
import java.awt.color.ColorSpace;
import java.awt.color.ICC_ColorSpace;
import java.awt.color.ICC_Profile;
import java.awt.image.BufferedImage;
import java.awt.image.ColorConvertOp;
import java.awt.image.ComponentColorModel;
import java.awt.image.DataBuffer;
import java.awt.image.IndexColorModel;
import java.awt.image.Raster;
import java.awt.image.WritableRaster;
import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Iterator;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.TreeMap;
import java.util.stream.Stream;
import javax.imageio.IIOImage;
import javax.imageio.ImageIO;
import javax.imageio.ImageWriter;
import javax.imageio.stream.ImageOutputStream;
import org.junit.jupiter.api.AfterAll;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.libjpegturbo.turbojpeg.TJ;
import org.libjpegturbo.turbojpeg.TJCompressor;

/** Every kind of picture that a user has: what becomes of it, as a reader that is not ours sees it. Makes docs/pictures.md. */
class PictureKindsTest extends CommandFixture {
    private static final Path kPhotos = Path.of(System.getProperty("quill.photos"));
    private static final int kWidth = 160;
    private static final int kHeight = 96;
    private static final Map<Integer, String> kRows = new TreeMap<>();

    interface Maker {
        /** Writes a file and returns the picture that a still of it has to show. */
        BufferedImage make(Path file) throws Exception;
    }

    /** {@code least} dB that the still has to have; with 0 the file is refused. {@code told}: in the line about it. */
    record Kind(String name, String file, Maker maker, double least, String told, String... options) {
        @Override
        public String toString() {
            return name;
        }
    }

    private static final List<Kind> kKinds = new ArrayList<>();

    private static void shown(String name, String file, double least, String told, Maker maker, String... options) {
        kKinds.add(new Kind(name, file, maker, least, told, options));
    }

    private static void refused(String name, String file, String why, Maker maker, String... options) {
        kKinds.add(new Kind(name, file, maker, 0, why, options));
    }

    PictureKindsTest() {
        super("still");
    }

    static Stream<Kind> kinds() {
        if (kKinds.isEmpty()) addKinds();
        return kKinds.stream();
    }

    private static void addKinds() {
        shown("photograph of 8 megapixels", "p.jpg", 42, "XMP",
                file -> ImageIO.read(Files.copy(kPhotos.resolve("phone-3264x2448.jpg"), file).toFile()));
        addJpegs();
        addPngs();
        addTiffs();
        addOthers();
    }

    private static void addJpegs() {
        String[] samplings = {"4:4:4", "4:2:2", "4:2:0", "gray", "4:4:0", "4:1:1"};
        for (int i = 0; i < samplings.length; ++i) {
            int sampling = i;
            shown("JPEG, " + samplings[i], "p.jpg", 36, "", file -> jpeg(file, source(sampling == TJ.SAMP_GRAY), sampling, 0));
        }
        for (String format : new String[] {"nv12", "nv21", "p010", "rgba"}) {
            shown("JPEG, 4:2:0, " + format, "p.jpg", 36, format.equals("p010") ? "have 8 bits" : "",
                    file -> write(file, source(false)), "--format", format);
        }
        shown("JPEG, progressive", "p.jpg", 36, "", file -> jpeg(file, source(false), TJ.SAMP_420, TJ.FLAG_PROGRESSIVE));
        shown("JPEG, YCCK", "p.jpg", 20, "", PictureKindsTest::ycck);
        shown("JPEG, CMYK", "p.jpg", 20, "", PictureKindsTest::cmyk);
        for (String profile : new String[] {"Adobe RGB", "Adobe RGB by EXIF", "Display P3", "ProPhoto RGB", "sRGB"}) {
            shown("JPEG, " + profile, "p.jpg", 36, "", file -> profiled(file, profile));
        }
        shown("JPEG, damaged profile", "p.jpg", 36, "damaged color profile", file -> {
            profiled(file, "sRGB");
            byte[] bytes = Files.readAllBytes(file);
            Arrays.fill(bytes, Pictures.find(bytes, "ICC_PROFILE") + 30, Pictures.find(bytes, "ICC_PROFILE") + 2000, (byte) 7);
            Files.write(file, bytes);
            return source(false);
        });
        shown("JPEG with XMP, IPTC and a comment", "p.jpg", 36, "not kept: XMP, IPTC, a comment",
                file -> tagged(file, "-XMP:Title=t", "-IPTC:Keywords=k", "-Comment=c"));
        for (int i = 2; i <= 8; ++i) {
            int orientation = i;
            shown("JPEG, EXIF orientation " + orientation, "p.jpg", 36, "", file -> oriented(file, orientation));
        }
        shown("JPEG, 64 kB of EXIF", "p.jpg", 36, "", file -> withExif(file, Arrays.copyOf(exif(1), 65533)));
        shown("JPEG, EXIF that leads in circles", "p.jpg", 36, "", file -> {
            byte[] block = exif(1);
            block[block.length - 1] = block[block.length - 4] = 8;  // the next directory is the first
            return withExif(file, block);
        });
        shown("JPEG, 1 x 1", "p.jpg", 36, "", file -> write(file, Pictures.picture(1, 1)));
        shown("JPEG, 65500 x 64", "p.jpg", 36, "no side above 32768", file -> write(file, Pictures.picture(65500, 64)));
        refused("JPEG, 655 x 63 as nv12", "p.jpg", "takes an even width and height",
                file -> write(file, Pictures.picture(655, 63)), "--format", "nv12");
        refused("JPEG, 12 bits", "p.jpg", "precision 12", file -> {
            write(file, source(false));
            byte[] bytes = Files.readAllBytes(file);
            bytes[Pictures.find(bytes, "\u00ff\u00c0") + 4] = 12;
            return none(Files.write(file, bytes));
        });
        shown("JPEG, bytes behind its scan", "p.jpg", 36, "extraneous bytes", file -> {
            BufferedImage image = write(file, source(false));
            byte[] bytes = Files.readAllBytes(file);
            Files.write(file, ByteBuffer.allocate(bytes.length + 9).put(bytes).putShort(bytes.length - 2, (short) 0)
                    .putShort(bytes.length + 7, (short) 0xffd9).array());
            return image;
        });
        refused("JPEG, cut", "p.jpg", "is cut short", file -> cut(file, f -> write(f, source(false))));
    }

    private static void addPngs() {
        for (int bits : new int[] {1, 2, 4, 8}) {
            shown("PNG, gray of " + bits, "p.png", 34, "", file -> write(file, indexed(bits, true)));
            shown("PNG, palette of " + bits, "p.png", 30, "", file -> write(file, indexed(bits, false)));
        }
        Map<String, int[]> deep = new TreeMap<>(Map.of("gray of 16", new int[] {1}, "gray and alpha of 16",
                new int[] {2}, "RGB of 16", new int[] {3}, "RGBA of 16", new int[] {4}));
        deep.forEach((name, bands) -> {
            String told = bands[0] % 2 == 0 ? "transparency" : "bits beyond 8";
            shown("PNG, " + name, "p.png", 36, told, file -> write(file, deep(source(bands[0] < 3), bands[0])));
        });
        shown("PNG, RGB of 16, p010", "p.png", 36, "", file -> write(file, ramp(3)), "--format", "p010");
        shown("PNG, gray of 16, p010", "p.png", 36, "", file -> write(file, ramp(1)), "--format", "p010");
        shown("PNG, RGB of 8", "p.png", 36, "", file -> write(file, source(false)));
        shown("PNG, RGBA of 8", "p.png", 36, "transparency", file -> {
            BufferedImage clear = new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_INT_ARGB);
            clear.createGraphics().drawImage(source(false), 0, 0, kWidth, kHeight / 2, null);
            return write(file, clear);
        });
        shown("PNG, Display P3", "p.png", 36, "", file -> profiled(file, "Display P3"));
        shown("PNG, Display P3 beyond sRGB", "p.png", 30, "colors outside sRGB", file -> profiled(file, "Display P3 beyond"));
        shown("PNG, gray with a profile", "p.png", 34, "", file -> profiled(file, "gray"));
        shown("PNG with EXIF, XMP and text", "p.png", 36, "not kept: text, XMP",
                file -> tagged(file, "-EXIF:Make=m", "-XMP:Title=t", "-PNG:Title=t"));
        shown("PNG, EXIF orientation 6", "p.png", 36, "", file -> oriented(file, 6));
        shown("PNG, 1 x 5000", "p.png", 36, "", file -> write(file, Pictures.picture(1, 5000)));
        refused("PNG, cut", "p.png", "is cut short", file -> cut(file, f -> write(f, source(false))));
    }

    private static void addTiffs() {
        shown("TIFF, RGB of 8", "p.tif", 36, "", file -> write(file, source(false)));
        shown("TIFF, gray of 8", "p.tif", 36, "", file -> write(file, source(true)));
        shown("TIFF, RGB of 16, p010", "p.tif", 36, "", file -> write(file, ramp(3)), "--format", "p010");
        shown("TIFF, Display P3", "p.tif", 36, "", file -> profiled(file, "Display P3"));
        shown("TIFF with EXIF, XMP and IPTC", "p.tif", 36, "not kept: XMP, IPTC",
                file -> tagged(file, "-EXIF:Make=m", "-EXIF:ISO=200", "-XMP:Title=t", "-IPTC:Keywords=k"));
        shown("TIFF, EXIF orientation 6", "p.tif", 36, "", file -> oriented(file, 6));
        refused("TIFF, cut", "p.tif", "is cut short", file -> cut(file, f -> write(f, source(false))));
    }

    private static void addOthers() {
        shown("name with spaces and a line feed", "a b\nc.jpg", 36, "", file -> write(file, source(false)));
        refused("HEIC", "p.heic", "is a HEIF or video file", file -> {
            write(file.resolveSibling("s.jpg"), source(false));
            assertEquals(0, Quill.commandLine().execute("still", file.resolveSibling("s.jpg").toString(), "-o", file.toString()));
            return null;
        });
        refused("folder", "p.jpg", "is a directory", file -> none(Files.createDirectory(file)));
        refused("empty file", "p.jpg", "is empty", file -> none(Files.createFile(file)));
        refused("text", "p.jpg", "is not a picture", file -> none(Files.writeString(file, "no picture at all")));
    }

    private static BufferedImage none(Path file) {
        return null;
    }

    /** The usual picture; gray: with equal components. */
    private static BufferedImage source(boolean gray) {
        BufferedImage image = Pictures.picture(kWidth, kHeight);
        for (int i = 0; gray && i < kWidth * kHeight; ++i) {
            image.setRGB(i % kWidth, i / kWidth, (image.getRGB(i % kWidth, i / kWidth) >> 8 & 0xff) * 0x10101);
        }
        return image;
    }

    private static BufferedImage jpeg(Path file, BufferedImage image, int sampling, int flags) throws IOException {
        try (TJCompressor jpeg = new TJCompressor(image, 0, 0, 0, 0)) {
            jpeg.setSubsamp(sampling);
            jpeg.setJPEGQuality(95);
            byte[] bytes = jpeg.compress(flags);
            Files.write(file, Arrays.copyOf(bytes, jpeg.getCompressedSize()));
        }
        return image;
    }

    /** Inks by the plainest rule, none of them black; as Adobe stores them, 255 is no ink. */
    private static byte[] inks(BufferedImage image) {
        ByteBuffer inks = ByteBuffer.allocate(4 * kWidth * kHeight);
        for (int rgb : image.getRGB(0, 0, kWidth, kHeight, null, 0, kWidth)) {
            inks.putInt(rgb << 8 | 0xff);
        }
        return inks.array();
    }

    private static BufferedImage ycck(Path file) throws IOException {
        try (TJCompressor jpeg = new TJCompressor(inks(source(false)), 0, 0, kWidth, 0, kHeight, TJ.PF_CMYK)) {
            jpeg.setSubsamp(TJ.SAMP_444);
            jpeg.setJPEGQuality(95);
            Files.write(file, jpeg.compress(0));
        }
        return source(false);
    }

    private static BufferedImage cmyk(Path file) throws IOException {
        Raster raster = Raster.createInterleavedRaster(0, kWidth, kHeight, 4, null);
        ((WritableRaster) raster).setDataElements(0, 0, kWidth, kHeight, inks(source(false)));
        write(file, writer("jpeg"), new IIOImage(raster, null, null));
        byte[] bytes = Files.readAllBytes(file);
        byte[] adobe = {(byte) 0xff, (byte) 0xee, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};  // no YCCK
        Files.write(file, ByteBuffer.allocate(bytes.length + adobe.length).put(bytes, 0, 2).put(adobe)
                .put(bytes, 2, bytes.length - 2).array());
        return source(false);
    }

    /** The picture in a profile's colors, with the profile. */
    private static BufferedImage profiled(Path file, String name) throws Exception {
        ICC_Profile profile = profile(name);
        int components = profile.getNumComponents();
        BufferedImage image = source(components == 1);
        BufferedImage stored = components == 1
                ? new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_BYTE_GRAY)
                : new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_3BYTE_BGR);
        ColorSpace sRgb = ColorSpace.getInstance(ColorSpace.CS_sRGB);
        ColorSpace space = new ICC_ColorSpace(profile);
        if (name.endsWith("beyond")) {  // its own numbers in the place of sRGB's
            stored = source(false);
            new ColorConvertOp(space, sRgb, null).filter(stored.getRaster(), image.getRaster());
        } else {
            new ColorConvertOp(sRgb, space, null).filter(image.getRaster(), stored.getRaster());
        }
        write(file, stored);
        Path icc = Files.write(file.resolveSibling("profile.icc"), profile.getData());
        String tag = name.endsWith("EXIF") ? "-InteropIndex=R03" : "-icc_profile<=" + icc;
        Programs.run("exiftool", "-overwrite_original", tag, "-ColorSpace=Uncalibrated", file.toString());
        return image;
    }

    private static ICC_Profile profile(String name) {
        if (name.equals("sRGB")) return ICC_Profile.getInstance(ColorSpace.CS_sRGB);
        if (name.equals("gray")) return ICC_Profile.getInstance(ColorSpace.CS_GRAY);
        ICC_Profile adobe = ((ICC_ColorSpace) ColorSpaces.getColorSpace(ColorSpaces.CS_ADOBE_RGB_1998)).getProfile();
        ICC_Profile profile = ICC_Profile.getInstance(adobe.getData());
        double[][] p3 = {{.5151, .2412, -.0011}, {.2920, .6922, .0419}, {.1571, .0666, .7841}};
        double[][] proPhoto = {{.7977, .2880, 0}, {.1352, .7119, 0}, {.0313, .0001, .8249}};
        int[] tags = {ICC_Profile.icSigRedColorantTag, ICC_Profile.icSigGreenColorantTag, ICC_Profile.icSigBlueColorantTag};
        for (int i = 0; i < 3 && !name.startsWith("Adobe RGB"); ++i) {
            ByteBuffer xyz = ByteBuffer.allocate(20).putInt(ICC_Profile.icSigXYZData).putInt(0);
            for (double value : name.startsWith("Display P3") ? p3[i] : proPhoto[i]) xyz.putInt((int) Math.round(value * 65536));
            profile.setData(tags[i], xyz.array());
        }
        return profile;
    }

    private static BufferedImage tagged(Path file, String... tags) throws Exception {
        BufferedImage image = write(file, source(false));
        Programs.run(Stream.of(new String[] {"exiftool", "-overwrite_original"}, tags, new String[] {file.toString()})
                .flatMap(Arrays::stream).toArray(String[]::new));
        return image;
    }

    /** Told to be turned by exiftool; what a viewer then shows. */
    private static BufferedImage oriented(Path file, int orientation) throws Exception {
        BufferedImage image = tagged(file, "-n", "-EXIF:Orientation=" + orientation);
        boolean turned = orientation > 4;
        BufferedImage shown = new BufferedImage(turned ? kHeight : kWidth, turned ? kWidth : kHeight, BufferedImage.TYPE_INT_RGB);
        for (int y = 0; y < shown.getHeight(); ++y) {
            for (int x = 0; x < shown.getWidth(); ++x) {
                int u = Set.of(2, 3, 6, 7).contains(orientation) ? shown.getWidth() - 1 - x : x;
                int v = Set.of(3, 4, 7, 8).contains(orientation) ? shown.getHeight() - 1 - y : y;
                shown.setRGB(x, y, turned ? image.getRGB(v, u) : image.getRGB(u, v));
            }
        }
        return shown;
    }

    private static byte[] exif(int orientation) {
        return Pictures.exif(ByteOrder.LITTLE_ENDIAN, orientation);
    }

    private static BufferedImage withExif(Path file, byte[] block) throws IOException {
        Files.write(file, Pictures.jpegWithExif(kWidth, kHeight, block));
        return source(false);
    }

    private static BufferedImage cut(Path file, Maker maker) throws Exception {
        maker.make(file);
        byte[] bytes = Files.readAllBytes(file);
        return none(Files.write(file, Arrays.copyOf(bytes, bytes.length * 2 / 3)));
    }

    /** One or two bands of gray, or three or four of color, in 16 bits; the second or fourth is alpha. */
    private static BufferedImage deep(BufferedImage image, int bands) {
        ColorSpace space = ColorSpace.getInstance(bands < 3 ? ColorSpace.CS_GRAY : ColorSpace.CS_sRGB);
        ComponentColorModel model = new ComponentColorModel(space, bands % 2 == 0, false, bands % 2 == 0 ? 3 : 1, DataBuffer.TYPE_USHORT);
        WritableRaster raster = model.createCompatibleWritableRaster(image.getWidth(), image.getHeight());
        for (int y = 0; y < image.getHeight(); ++y) {
            for (int x = 0; x < image.getWidth(); ++x) {
                Color color = new Color(image.getRGB(x, y));
                int[] samples = {color.getRed() * 257, color.getGreen() * 257, color.getBlue() * 257, x * 400};
                if (bands < 3) samples[1] = x * 400;
                raster.setPixel(x, y, samples);
            }
        }
        return new BufferedImage(model, raster, false, null);
    }

    /** A quarter of the range in steps of ten bits and less. */
    private static BufferedImage ramp(int bands) {
        BufferedImage image = deep(new BufferedImage(1024, 64, BufferedImage.TYPE_INT_RGB), bands);
        for (int i = 0; i < 1024 * 64 * bands; ++i) {
            image.getRaster().setSample(i / bands % 1024, i / bands / 1024, i % bands, 20000 + i / bands % 1024 * 16);
        }
        return image;
    }

    /** With a palette of grays or of colors. */
    private static BufferedImage indexed(int bits, boolean gray) {
        int size = 1 << bits;
        byte[][] colors = new byte[3][size];
        for (int i = 0; i < size; ++i) {
            for (int c = 0; c < 3; ++c) colors[c][i] = (byte) (gray || c == 0 ? 255 * i / (size - 1) : c == 1 ? 255 - 255 * i / (size - 1) : 100);
        }
        IndexColorModel model = new IndexColorModel(bits, size, colors[0], colors[1], colors[2]);
        int type = bits < 8 ? BufferedImage.TYPE_BYTE_BINARY : BufferedImage.TYPE_BYTE_INDEXED;
        BufferedImage image = new BufferedImage(kWidth, kHeight, type, model);
        for (int i = 0; i < kWidth * kHeight; ++i) image.getRaster().setSample(i % kWidth, i / kWidth, 0, i % kWidth * size / kWidth);
        return image;
    }

    /** By the file's ending; JPEG in 4:2:0. */
    private static BufferedImage write(Path file, BufferedImage image) throws IOException {
        String ending = file.toString().substring(file.toString().length() - 3);
        if (ending.equals("jpg")) return jpeg(file, image, TJ.SAMP_420, 0);
        write(file, writer(ending), new IIOImage(image, null, null));
        return Pictures.onWhite(image);
    }

    /** The JDK's: it writes more kinds than the plug-ins. */
    private static ImageWriter writer(String format) {
        Iterator<ImageWriter> writers = ImageIO.getImageWritersByFormatName(format);
        ImageWriter writer = writers.next();
        while (!writer.getClass().getName().startsWith("com.sun.")) writer = writers.next();
        return writer;
    }

    private static void write(Path file, ImageWriter writer, IIOImage image) throws IOException {
        try (ImageOutputStream stream = ImageIO.createImageOutputStream(file.toFile())) {
            writer.setOutput(stream);
            writer.write(image);
        }
    }

    @ParameterizedTest
    @MethodSource("kinds")
    void still_OfEveryKind(Kind kind) throws Exception {
        Path photo = in(kind.file);
        BufferedImage expected = kind.maker.make(photo);
        List<Object> arguments = new ArrayList<>(Arrays.asList((Object[]) kind.options));
        arguments.addAll(List.of("-o", in("still.heic"), "--", photo));
        int status = run(arguments.toArray());
        String told = mErr.toString().replace("quill: " + FailureText.line(photo.toString()) + ": ", "").strip();
        assertEquals(kind.least == 0 ? 1 : 0, status, told);
        assertTrue(told.contains(kind.told) && kind.told.isEmpty() == told.isEmpty() && told.lines().count() < 2, told);
        assertEquals(kind.least > 0, Files.exists(in("still.heic")));
        double psnr = kind.least == 0 ? 0 : psnr(kind, expected);
        String shown = kind.least == 0 ? "refused" : Double.isNaN(psnr) ? "written" : (int) psnr + " dB";
        if (kind.name.endsWith("of 16, p010")) {
            assertTrue(levels() >= 100, levels() + " levels");
            shown += ", " + levels() + " of 257 levels";
        }
        if (kind.name.contains("with EXIF,")) assertExif("-Make", "m");
        if (kind.name.endsWith("by EXIF")) assertExif("-ColorSpace", "sRGB");
        kRows.put(kKinds.indexOf(kind), "| " + kind.name + " | " + shown + " | " + told + " |\n");
    }

    private void assertExif(String tag, String value) throws Exception {
        assertEquals(value, new String(Programs.run("exiftool", "-s3", tag, in("still.heic").toString())).strip());
    }

    private double psnr(Kind kind, BufferedImage expected) throws Exception {
        if (kind.told.contains("32768")) return Double.NaN;  // which libheif is one of
        Programs.run("heif-convert", in("still.heic").toString(), in("shown.png").toString());
        double psnr = Pictures.psnr(expected, ImageIO.read(in("shown.png").toFile()));
        assertTrue(psnr >= kind.least, psnr + " dB");
        return Math.min(psnr, 99);
    }

    /** Different values in a row of what is shown. */
    private long levels() throws IOException {
        Raster row = ImageIO.read(in("shown.png").toFile()).getRaster();
        return Arrays.stream(row.getSamples(0, 0, row.getWidth(), 1, 1, (int[]) null)).distinct().count();
    }

    @AfterAll
    static void compareDocs() throws IOException {
        if (kRows.size() < kKinds.size()) return;
        String table = "| picture | still | what the command says |\n|---|---|---|\n" + String.join("", kRows.values());
        GeneratedDocs.expectSection(kPhotos.resolveSibling("docs/pictures.md"), "kinds", table);
    }
}
