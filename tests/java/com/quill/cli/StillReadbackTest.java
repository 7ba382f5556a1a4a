package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.Image;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.regex.Pattern;
import java.util.stream.Stream;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.Arguments;
import org.junit.jupiter.params.provider.MethodSource;
import org.junit.jupiter.params.provider.ValueSource;
import picocli.CommandLine;

/** Stills of real photographs, as readers that are not ours see them. */
class StillReadbackTest {
    private static final Path kPhotos = Path.of(System.getProperty("quill.photos"));
    private static final String kPhone = "phone-3264x2448";
    private static final String kBigEndian = "phone-4608x1976-big-endian";
    private static final String kCompact = "compact-640x480-with-thumbnail";

    @TempDir
    Path mFolder;

    private Path still(Path photo, String... options) {
        Path still = mFolder.resolve("still.heic");
        CommandLine line = Quill.commandLine();
        String[] arguments = Stream.concat(Stream.of("still", photo.toString(), "-o", still.toString()),
                Stream.of(options)).toArray(String[]::new);
        assertEquals(0, line.execute(arguments));
        return still;
    }

    private static String run(String... command) throws IOException, InterruptedException {
        return new String(Programs.run(command), StandardCharsets.UTF_8);
    }

    private BufferedImage decode(Path still) throws IOException, InterruptedException {
        Path png = mFolder.resolve("still.png");
        run("heif-convert", still.toString(), png.toString());
        BufferedImage image = ImageIO.read(png.toFile());
        assertNotNull(image);
        return image;
    }

    private static double psnr(BufferedImage expected, BufferedImage actual) {
        assertEquals(expected.getWidth(), actual.getWidth());
        assertEquals(expected.getHeight(), actual.getHeight());
        double squares = 0;
        for (int y = 0; y < expected.getHeight(); ++y) {
            for (int x = 0; x < expected.getWidth(); ++x) {
                int a = expected.getRGB(x, y);
                int b = actual.getRGB(x, y);
                for (int shift = 0; shift < 24; shift += 8) {
                    int difference = (a >> shift & 0xff) - (b >> shift & 0xff);
                    squares += difference * difference;
                }
            }
        }
        double mean = squares / (3.0 * expected.getWidth() * expected.getHeight());
        return 10 * Math.log10(255 * 255 / mean);
    }

    private static long count(String text, String pattern) {
        return Pattern.compile(pattern).matcher(text).results().count();
    }

    static Stream<Arguments> photosAndFormats() {
        return Stream.concat(Stream.of(Arguments.of(kPhone, "nv12"), Arguments.of(kBigEndian, "nv12")),
                Stream.of("i420", "nv12", "nv21", "p010", "rgba").map(format -> Arguments.of(kCompact, format)));
    }

    @ParameterizedTest
    @MethodSource("photosAndFormats")
    void still_DecodesToThePhotograph(String name, String format) throws Exception {
        Path photo = kPhotos.resolve(name + ".jpg");
        BufferedImage source = ImageIO.read(photo.toFile());
        Path still = still(photo, "--format", format);
        String size = source.getWidth() + "x" + source.getHeight();
        assertTrue(run("heif-info", still.toString()).contains("image: " + size));
        boolean converted = format.equals("p010") || format.equals("rgba");
        double psnr = psnr(source, decode(still));
        assertTrue(psnr >= (converted ? 36 : 38), name + " as " + format + ": " + psnr + " dB");
    }

    @Test
    void still_LargePhotographIsAGridOfHiddenTilesWithOneDecoderConfiguration() throws Exception {
        String boxes = run("heif-info", "-d", still(kPhotos.resolve(kPhone + ".jpg")).toString());
        assertEquals(35, count(boxes, "item_type: hvc1\\s[\\s|]*item_name:[^\\n]*\\n(?:[|\\s].*\\n){0,4}?.*hidden item: true"));
        assertEquals(1, count(boxes, "item_type: grid"));
        assertEquals(1, count(boxes, "Box: hvcC"));
        assertTrue(count(boxes, "image width: 512\\s[\\s|]*image height: 512") == 1, "one size for all tiles");
    }

    @Test
    void still_SmallPictureIsOneCodedImage() throws Exception {
        String boxes = run("heif-info", "-d", still(Pictures.writeJpeg(mFolder.resolve("small.jpg"), 320, 240)).toString());
        assertEquals(1, count(boxes, "item_type: hvc1"));
        assertEquals(0, count(boxes, "item_type: grid"));
        assertTrue(count(boxes, "image width: 320\\s[\\s|]*image height: 240") == 1);
    }

    @Test
    void still_RotationTurnsThePictureOnce() throws Exception {
        Path photo = mFolder.resolve("turned.jpg");
        Files.write(photo, Pictures.jpegWithExif(160, 96, Pictures.exif(ByteOrder.LITTLE_ENDIAN, 6)));
        Path still = still(photo);
        BufferedImage shown = decode(still);
        assertEquals(96, shown.getWidth());
        assertEquals(160, shown.getHeight());
        assertTrue((shown.getRGB(4, 4) >> 8 & 0xff) > 0xe0, "the green of the bottom is not at the top");
        assertTrue(run("exiftool", "-G1", "-s", still.toString()).contains("Horizontal (normal)"));
    }

    @ParameterizedTest
    @ValueSource(strings = {"nv21", "p010"})  // an RGBA frame's has chroma of its own weights
    void still_PhotographWithoutThumbnailGetsOneThatLooksLikeIt(String format) throws Exception {
        Path photo = kPhotos.resolve(kPhone + ".jpg");
        Path jpeg = Files.write(mFolder.resolve("thumbnail.jpg"),
                Programs.run("exiftool", "-b", "-ThumbnailImage", still(photo, "--format", format).toString()));
        String facts = run("exiftool", "-s", "-s", jpeg.toString());
        assertTrue(facts.contains("EncodingProcess: Baseline DCT, Huffman coding"), facts);
        assertTrue(facts.contains("YCbCrSubSampling: YCbCr4:2:0 (2 2)"), facts);
        BufferedImage small = new BufferedImage(256, 192, BufferedImage.TYPE_INT_RGB);
        Image reduced = ImageIO.read(photo.toFile()).getScaledInstance(256, 192, Image.SCALE_AREA_AVERAGING);
        small.createGraphics().drawImage(reduced, 0, 0, null);
        double psnr = psnr(small, ImageIO.read(jpeg.toFile()));
        assertTrue(psnr >= 26, format + ": " + psnr + " dB");
    }
}
