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
import java.util.Arrays;
import java.util.Iterator;
import java.util.List;
import java.util.Map;
import java.util.Set;
import java.util.function.UnaryOperator;
import java.util.stream.Stream;
import javax.imageio.IIOImage;
import javax.imageio.ImageIO;
import javax.imageio.ImageWriter;
import javax.imageio.stream.ImageOutputStream;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.MethodSource;
import org.libjpegturbo.turbojpeg.TJ;
import org.libjpegturbo.turbojpeg.TJCompressor;

/** Every row of docs/pictures.md: what becomes of a picture, as a reader that is not ours sees it. */
class PictureKindsTest extends CommandFixture {
    private static final Path kDocument = kPhotos.resolveSibling("docs/pictures.md");
    private static final int kWidth = 160;
    private static final int kHeight = 96;

    PictureKindsTest() {
        super("still");
    }

    static Stream<String> rows() throws IOException {
        return Files.readString(kDocument).split("<!-- kinds: (begin|end) -->\n")[1].lines().skip(2);
    }

    /** Writes a picture and returns what a still of it has to show; null when it is to be refused. */
    private static BufferedImage make(String kind, Path file) throws Exception {
        boolean gray = kind.matches(".*, gray.*");
        int number = Character.digit(kind.charAt(kind.length() - 1), 10);
        if (kind.contains("orientation")) return oriented(file, number);
        if (kind.contains(" of 16")) return deep(file, (gray ? 1 : 3) + (kind.matches(".*(RGBA|alpha).*") ? 1 : 0),
                kind.endsWith("p010"));
        if (kind.matches("PNG, (gray|palette) of .")) return write(file, indexed(number, gray));
        if (kind.matches(".*, RGBA? of 8|TIFF, gray of 8|JPEG, 4:2:0, .*|name with .*")) {
            if (!kind.contains("RGBA")) return write(file, source(gray));
            BufferedImage clear = new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_INT_ARGB);
            clear.createGraphics().drawImage(source(false), 0, 0, kWidth, kHeight / 2, null);
            return write(file, clear);
        }
        if (kind.matches("JPEG, (4:.:.|gray)")) {
            return jpeg(file, source(gray), List.of("4:4:4", "4:2:2", "4:2:0", "gray", "4:4:0", "4:1:1")
                    .indexOf(kind.substring(6)), 0);
        }
        if (kind.matches(".*( RGB|by EXIF|P3.*|, sRGB|a profile)")) return profiled(file, kind);
        byte[] exif = Pictures.exif(ByteOrder.LITTLE_ENDIAN, 1);
        return switch (kind) {
            case "photograph of 8 megapixels" ->
                ImageIO.read(Files.copy(kPhotos.resolve("phone-3264x2448.jpg"), file).toFile());
            case "JPEG, progressive" -> jpeg(file, source(false), TJ.SAMP_420, TJ.FLAG_PROGRESSIVE);
            case "JPEG, YCCK" -> jpeg(file, source(false), TJ.SAMP_444, 0,
                    new TJCompressor(inks(), 0, 0, kWidth, 0, kHeight, TJ.PF_CMYK));
            case "JPEG, CMYK" -> cmyk(file);
            case "JPEG, damaged profile" -> changed(file, profiled(file, "JPEG, sRGB"),
                    text -> text.replaceFirst("(?s)(ICC_PROFILE.{19}).{1970}", "$1" + "\7".repeat(1970)));
            case "JPEG with XMP, IPTC and a comment" -> tagged(file, "-XMP:Title=t", "-IPTC:Keywords=k", "-Comment=c");
            case "PNG with EXIF, XMP and text" -> tagged(file, "-EXIF:Make=m", "-XMP:Title=t", "-PNG:Title=t");
            case "TIFF with EXIF, XMP and IPTC" ->
                tagged(file, "-EXIF:Make=m", "-EXIF:ISO=200", "-XMP:Title=t", "-IPTC:Keywords=k");
            case "TIFF, RGB of 32, floating" -> floating(file);
            case "TIFF of two pictures" -> write(file, source(false), source(true));
            case "JPEG, 64 kB of EXIF" -> withExif(file, Arrays.copyOf(exif, 65533));
            case "JPEG, EXIF that leads in circles" ->
                withExif(file, ByteBuffer.wrap(exif).putInt(exif.length - 4, 8 << 24).array());
            case "JPEG, 1 x 1" -> write(file, Pictures.picture(1, 1, false));
            case "JPEG, 65500 x 64" -> write(file, Pictures.picture(65500, 64, false));
            case "PNG, 1 x 5000" -> write(file, Pictures.picture(1, 5000, false));
            case "JPEG, 655 x 63 as nv12" -> none(Pictures.writeJpeg(file, 655, 63));
            case "JPEG, 12 bits" -> none(changed(file, write(file, source(false)),
                    text -> text.replace("\u00ff\u00c0\0\21\b", "\u00ff\u00c0\0\21\f")));
            case "JPEG, tables alone" -> none(changed(file, write(file, source(false)),
                    text -> text.replaceFirst("(?s)\u00ff\u00c0.*", "\u00ff\u00d9")));
            case "JPEG, cut", "PNG, cut", "TIFF, cut" -> none(changed(file, write(file, source(false)),
                    text -> text.substring(0, text.length() * 2 / 3)));
            case "JPEG, bytes behind its scan" -> changed(file, write(file, source(false)),
                    text -> text.substring(0, text.length() - 2) + "\0".repeat(9) + "\u00ff\u00d9");
            case "HEIC" -> none(Quill.commandLine().execute("still",
                    file.resolveSibling("photo.jpg").toString(), "-o", file.toString()));
            case "folder" -> none(Files.createDirectory(file));
            case "empty file" -> none(Files.createFile(file));
            case "text" -> none(Files.writeString(file, "no picture at all"));
            default -> throw new IllegalArgumentException(kind);
        };
    }

    private static BufferedImage none(Object made) {
        return null;
    }

    private static BufferedImage source(boolean gray) {
        return Pictures.picture(kWidth, kHeight, gray);
    }

    private static BufferedImage changed(Path file, BufferedImage image, UnaryOperator<String> change)
            throws IOException {
        Pictures.change(file, change);
        return image;
    }

    private static BufferedImage withExif(Path file, byte[] block) throws IOException {
        Pictures.writeJpeg(file, source(false), block);
        return source(false);
    }

    private static BufferedImage jpeg(Path file, BufferedImage image, int sampling, int flags) throws IOException {
        return jpeg(file, image, sampling, flags, new TJCompressor(image, 0, 0, 0, 0));
    }

    private static BufferedImage jpeg(Path file, BufferedImage image, int sampling, int flags, TJCompressor jpeg)
            throws IOException {
        try (jpeg) {
            jpeg.setSubsamp(sampling);
            jpeg.setJPEGQuality(95);
            Files.write(file, Arrays.copyOf(jpeg.compress(flags), jpeg.getCompressedSize()));
        }
        return image;
    }

    /** The usual picture's inks by the plainest rule, none of them black; as Adobe stores them, 255 is no ink. */
    private static byte[] inks() {
        ByteBuffer inks = ByteBuffer.allocate(4 * kWidth * kHeight);
        for (int rgb : source(false).getRGB(0, 0, kWidth, kHeight, null, 0, kWidth)) inks.putInt(rgb << 8 | 0xff);
        return inks.array();
    }

    private static BufferedImage cmyk(Path file) throws Exception {
        WritableRaster raster = Raster.createInterleavedRaster(0, kWidth, kHeight, 4, null);
        raster.setDataElements(0, 0, kWidth, kHeight, inks());
        write(file, "jpeg", new IIOImage(raster, null, null));
        String adobe = "\u00ff\u00ee\0\16Adobe\0\144\0\0\0\0\0";  // no YCCK
        return changed(file, source(false), text -> text.substring(0, 2) + adobe + text.substring(2));
    }

    /** The picture in a profile's colors, with the profile. */
    private static BufferedImage profiled(Path file, String name) throws Exception {
        ICC_Profile profile = profile(name);
        boolean gray = profile.getNumComponents() == 1;
        BufferedImage image = source(gray);
        BufferedImage stored = source(false);
        if (gray) stored = new BufferedImage(kWidth, kHeight, BufferedImage.TYPE_BYTE_GRAY);
        ColorSpace sRgb = ColorSpace.getInstance(ColorSpace.CS_sRGB);
        ColorSpace space = new ICC_ColorSpace(profile);
        if (name.contains("beyond")) {  // its own numbers in the place of sRGB's
            new ColorConvertOp(space, sRgb, null).filter(stored.getRaster(), image.getRaster());
        } else {
            new ColorConvertOp(sRgb, space, null).filter(image.getRaster(), stored.getRaster());
        }
        write(file, stored);
        Path icc = Files.write(file.resolveSibling("profile.icc"), profile.getData());
        String tag = name.endsWith("EXIF") ? "-InteropIndex=R03" : "-icc_profile<=" + icc;
        program("exiftool", "-overwrite_original", tag, "-ColorSpace=Uncalibrated", file);
        return image;
    }

    private static ICC_Profile profile(String name) {
        if (name.endsWith(", sRGB")) return ICC_Profile.getInstance(ColorSpace.CS_sRGB);
        if (name.contains("gray")) return ICC_Profile.getInstance(ColorSpace.CS_GRAY);
        ICC_Profile adobe = ((ICC_ColorSpace) ColorSpaces.getColorSpace(ColorSpaces.CS_ADOBE_RGB_1998)).getProfile();
        ICC_Profile profile = ICC_Profile.getInstance(adobe.getData());
        double[][] p3 = {{.5151, .2412, -.0011}, {.2920, .6922, .0419}, {.1571, .0666, .7841}};
        double[][] proPhoto = {{.7977, .2880, 0}, {.1352, .7119, 0}, {.0313, .0001, .8249}};
        int[] tags = {ICC_Profile.icSigRedColorantTag, ICC_Profile.icSigGreenColorantTag,
            ICC_Profile.icSigBlueColorantTag};
        for (int i = 0; i < 3 && !name.contains("Adobe RGB"); ++i) {
            ByteBuffer xyz = ByteBuffer.allocate(20).putInt(ICC_Profile.icSigXYZData).putInt(0);
            for (double value : name.contains("P3") ? p3[i] : proPhoto[i]) xyz.putInt((int) Math.round(value * 65536));
            profile.setData(tags[i], xyz.array());
        }
        return profile;
    }

    private static BufferedImage tagged(Path file, String... tags) throws Exception {
        BufferedImage image = write(file, source(false));
        program(Stream.of(new Object[] {"exiftool", "-overwrite_original"}, tags, new Object[] {file})
                .flatMap(Arrays::stream).toArray());
        return image;
    }

    /** Told to be turned by exiftool; what a viewer then shows. */
    private static BufferedImage oriented(Path file, int orientation) throws Exception {
        BufferedImage image = tagged(file, "-n", "-EXIF:Orientation=" + orientation);
        boolean turned = orientation > 4;
        int width = turned ? kHeight : kWidth;
        int height = turned ? kWidth : kHeight;
        BufferedImage shown = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        for (int i = 0; i < width * height; ++i) {
            int u = Set.of(2, 3, 6, 7).contains(orientation) ? width - 1 - i % width : i % width;
            int v = Set.of(3, 4, 7, 8).contains(orientation) ? height - 1 - i / width : i / width;
            shown.setRGB(i % width, i / width, turned ? image.getRGB(v, u) : image.getRGB(u, v));
        }
        return shown;
    }

    /**
     * One or two bands of gray, or three or four of color, in 16 bits; the second or fourth is alpha. A ramp has a
     * quarter of the range in steps of ten bits and less.
     */
    private static BufferedImage deep(Path file, int bands, boolean ramp) throws IOException {
        BufferedImage shown = ramp ? Pictures.picture(1024, 64, false) : source(bands < 3);
        boolean alpha = bands % 2 == 0;
        ColorSpace space = ColorSpace.getInstance(bands < 3 ? ColorSpace.CS_GRAY : ColorSpace.CS_sRGB);
        ComponentColorModel model = new ComponentColorModel(space, alpha, false,
                alpha ? Color.TRANSLUCENT : Color.OPAQUE, DataBuffer.TYPE_USHORT);
        WritableRaster raster = model.createCompatibleWritableRaster(shown.getWidth(), shown.getHeight());
        for (int i = 0; i < shown.getWidth() * shown.getHeight(); ++i) {
            int x = i % shown.getWidth();
            int y = i / shown.getWidth();
            int[] samples = new int[4];
            int rgb = 0;
            for (int band = 0; band < 3; ++band) {
                samples[band] = ramp ? 20000 + x * 16 : (shown.getRGB(x, y) >> 16 - 8 * band & 0xff) * 257;
                double white = alpha ? 65535 - x * 400 : 0;
                rgb = rgb << 8 | (int) Math.round((white + samples[band] * (1 - white / 65535)) / 257);
            }
            if (alpha) samples[bands - 1] = x * 400;
            raster.setPixel(x, y, samples);
            shown.setRGB(x, y, rgb);
        }
        write(file, new BufferedImage(model, raster, false, null));
        return shown;
    }

    private static BufferedImage floating(Path file) throws IOException {
        ComponentColorModel model = new ComponentColorModel(ColorSpace.getInstance(ColorSpace.CS_sRGB), false, false,
                Color.OPAQUE, DataBuffer.TYPE_FLOAT);
        WritableRaster raster = model.createCompatibleWritableRaster(kWidth, kHeight);
        float[] samples = source(false).getRaster().getPixels(0, 0, kWidth, kHeight, (float[]) null);
        for (int i = 0; i < samples.length; ++i) samples[i] /= 255;
        raster.setPixels(0, 0, kWidth, kHeight, samples);
        write(file, new BufferedImage(model, raster, false, null));
        return source(false);
    }

    /** With a palette of grays or of colors. */
    private static BufferedImage indexed(int bits, boolean gray) {
        int size = 1 << bits;
        int[] colors = new int[size];
        for (int i = 0; i < size; ++i) {
            int level = 255 * i / (size - 1);
            colors[i] = gray ? level * 0x10101 : level << 16 | 255 - level << 8 | 100;
        }
        IndexColorModel model = new IndexColorModel(bits, size, colors, 0, false, -1, DataBuffer.TYPE_BYTE);
        int type = bits < 8 ? BufferedImage.TYPE_BYTE_BINARY : BufferedImage.TYPE_BYTE_INDEXED;
        BufferedImage image = new BufferedImage(kWidth, kHeight, type, model);
        for (int i = 0; i < kWidth * kHeight; ++i) {
            image.getRaster().setSample(i % kWidth, i / kWidth, 0, i % kWidth * size / kWidth);
        }
        return image;
    }

    /** By the file's ending, JPEG in 4:2:0; what is shown of the image, transparency on white. */
    private static BufferedImage write(Path file, BufferedImage image, BufferedImage... more) throws IOException {
        String ending = file.toString().substring(file.toString().length() - 3);
        if (ending.equals("jpg")) return jpeg(file, image, TJ.SAMP_420, 0);
        write(file, ending, new IIOImage(image, null, null), more);
        BufferedImage shown = new BufferedImage(image.getWidth(), image.getHeight(), BufferedImage.TYPE_INT_RGB);
        shown.createGraphics().drawImage(image, 0, 0, Color.WHITE, null);
        return shown;
    }

    /** By the JDK's writer, which takes more kinds than the plug-ins'. */
    private static void write(Path file, String format, IIOImage image, BufferedImage... more) throws IOException {
        Iterator<ImageWriter> writers = ImageIO.getImageWritersByFormatName(format);
        ImageWriter writer = writers.next();
        while (!writer.getClass().getName().startsWith("com.sun.")) writer = writers.next();
        try (ImageOutputStream stream = ImageIO.createImageOutputStream(file.toFile())) {
            writer.setOutput(stream);
            writer.write(image);
            for (int i = 0; i < more.length; ++i) writer.writeInsert(i + 1, new IIOImage(more[i], null, null), null);
        }
    }

    /** With QUILL_UPDATE_DOCS=1 a row that differs is rewritten. */
    @ParameterizedTest
    @MethodSource("rows")
    void still_BecomesWhatItsRowSays(String row) throws Exception {
        String kind = row.split(" *\\| *")[1];
        String ending = Map.of("PNG", "png", "TIF", "tif", "HEI", "heic").getOrDefault(kind.substring(0, 3), "jpg");
        Path photo = in(kind.contains("line feed") ? "a b\nc.jpg" : "p." + ending);
        BufferedImage expected = make(kind, photo);
        String end = kind.substring(kind.length() - 4);
        String option = end.matches("nv12|nv21|p010|rgba") ? "--format=" + end : "--quality=95";
        int status = run(option, "-o", in("still.heic"), "--", photo);
        String told = mErr.toString().replace("quill: " + FailureText.line(photo.toString()) + ": ", "").strip();
        assertEquals(expected == null ? 1 : 0, status, told);
        assertEquals(expected != null, Files.exists(in("still.heic")));
        String shown = expected == null ? "refused" : kind.contains("65500") ? "written" : shown(kind, expected);
        if (kind.matches(".*(with|by) EXIF.*")) {
            boolean space = kind.endsWith("by EXIF");
            byte[] kept = program("exiftool", "-s3", space ? "-ColorSpace" : "-Make", in("still.heic"));
            assertEquals(space ? "sRGB" : "m", new String(kept).strip());
        }
        String actual = "| " + kind + " | " + shown + " | " + told + " |";
        int said = decibels(row);
        int measured = decibels(actual);
        // Each build of the JDK rounds colors its own way: that is little at 40 dB and much at 70.
        if (Math.abs(said - measured) <= 1 || Math.min(said, measured) >= 50) {
            actual = actual.replace(measured + " dB", said + " dB");
        }
        if ("1".equals(System.getenv("QUILL_UPDATE_DOCS"))) {
            Files.writeString(kDocument, Files.readString(kDocument).replace(row + "\n", actual + "\n"));
        }
        assertEquals(row, actual, "QUILL_UPDATE_DOCS=1 rewrites it");
    }

    private static int decibels(String row) {
        return row.contains(" dB") ? Integer.parseInt(row.replaceAll(".*\\| (\\d+) dB.*", "$1")) : 0;
    }

    private String shown(String kind, BufferedImage expected) throws Exception {
        program("heif-convert", in("still.heic"), in("shown.png"));
        BufferedImage shown = ImageIO.read(in("shown.png").toFile());
        double psnr = psnr(expected, shown);
        assertTrue(psnr >= 36, psnr + " dB");
        String decibels = (int) Math.min(psnr, 99) + " dB";
        if (!kind.endsWith("of 16, p010")) return decibels;
        int[] row = shown.getRaster().getSamples(0, 0, shown.getWidth(), 1, 1, (int[]) null);
        long levels = Arrays.stream(row).distinct().count();
        assertTrue(levels >= 100, levels + " levels");
        return decibels + ", " + levels + " of 257 levels";
    }

    private static double psnr(BufferedImage expected, BufferedImage actual) {
        int width = expected.getWidth();
        int height = expected.getHeight();
        assertEquals(width + "x" + height, actual.getWidth() + "x" + actual.getHeight());
        int[] a = expected.getRGB(0, 0, width, height, null, 0, width);
        int[] b = actual.getRGB(0, 0, width, height, null, 0, width);
        double squares = 0;
        for (int i = 0; i < 3 * a.length; ++i) {
            int shift = i % 3 * 8;
            squares += Math.pow((a[i / 3] >> shift & 0xff) - (b[i / 3] >> shift & 0xff), 2);
        }
        return 10 * Math.log10(255 * 255 * 3.0 * a.length / squares);
    }
}
