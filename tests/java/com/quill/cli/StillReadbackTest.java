package com.quill.cli;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.io.InputStream;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
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
        ProcessBuilder builder = new ProcessBuilder(command).redirectErrorStream(true);
        builder.environment().remove("LD_PRELOAD");  // a sanitizer's runtime is for our own code
        Process process = builder.start();
        String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
        assertEquals(0, process.waitFor(), output);
        return output;
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
    void still_OddSizeIsKept() throws Exception {
        Path photo = mFolder.resolve("odd.png");
        ImageIO.write(Pictures.picture(131, 67), "png", photo.toFile());
        assertTrue(psnr(ImageIO.read(photo.toFile()), decode(still(photo))) >= 34);
    }

    @Test
    void still_RotationTurnsThePictureOnce() throws Exception {
        Path photo = mFolder.resolve("turned.jpg");
        Files.write(photo, Pictures.jpegWithExif(160, 96, Pictures.exif(ByteOrder.LITTLE_ENDIAN, 6)));
        Path still = still(photo);
        BufferedImage shown = decode(still);
        assertEquals(96, shown.getWidth());
        assertEquals(160, shown.getHeight());
        assertTrue(run("exiftool", "-G1", "-s", still.toString()).contains("Horizontal (normal)"));
    }

    private static byte[] output(String... command) throws IOException, InterruptedException {
        ProcessBuilder builder = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.DISCARD);
        builder.environment().remove("LD_PRELOAD");
        Process process = builder.start();
        byte[] output = process.getInputStream().readAllBytes();
        assertEquals(0, process.waitFor());
        return output;
    }

    /** What the still command hands over for a photograph. */
    private static byte[] handedOver(Path photo) throws IOException {
        try (InputStream file = Files.newInputStream(photo)) {
            byte[] block = ExifBlock.find(file);
            ExifBlock.setUpright(block);
            return block;
        }
    }

    /** The still's EXIF item without the four bytes that the container puts in front. */
    private byte[] exifOf(Path still) throws IOException, InterruptedException {
        run("heif-convert", "--with-exif", still.toString(), mFolder.resolve("still.png").toString());
        byte[] item = Files.readAllBytes(mFolder.resolve("still.exif"));
        return Arrays.copyOfRange(item, 4, item.length);
    }

    private static int mean(BufferedImage source, int left, int top, int right, int bottom) {
        long[] sums = new long[3];
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                int rgb = source.getRGB(x, y);
                for (int i = 0; i < 3; ++i) sums[i] += rgb >> 8 * i & 0xff;
            }
        }
        long count = (long) (right - left) * (bottom - top);
        return (int) (sums[2] / count << 16 | sums[1] / count << 8 | sums[0] / count);
    }

    private static BufferedImage reduced(BufferedImage source, int width, int height) {
        BufferedImage reduced = new BufferedImage(width, height, BufferedImage.TYPE_INT_RGB);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                reduced.setRGB(x, y, mean(source, x * source.getWidth() / width, y * source.getHeight() / height,
                        (x + 1) * source.getWidth() / width, (y + 1) * source.getHeight() / height));
            }
        }
        return reduced;
    }

    /** Mean difference in levels, the worst channel's. */
    private static double difference(BufferedImage expected, BufferedImage actual) {
        double worst = 0;
        for (int shift = 0; shift < 24; shift += 8) {
            double sum = 0;
            for (int y = 0; y < expected.getHeight(); ++y) {
                for (int x = 0; x < expected.getWidth(); ++x) {
                    sum += Math.abs((expected.getRGB(x, y) >> shift & 0xff) - (actual.getRGB(x, y) >> shift & 0xff));
                }
            }
            worst = Math.max(worst, sum / (expected.getWidth() * expected.getHeight()));
        }
        return worst;
    }

    private BufferedImage checkedThumbnail(Path still) throws IOException, InterruptedException {
        Path jpeg = Files.write(mFolder.resolve("thumbnail.jpg"),
                output("exiftool", "-b", "-ThumbnailImage", still.toString()));
        String facts = run("exiftool", "-s", "-s", jpeg.toString());
        assertTrue(facts.contains("ImageSize: 256x192"), facts);
        assertTrue(facts.contains("EncodingProcess: Baseline DCT, Huffman coding"), facts);
        assertTrue(facts.contains("YCbCrSubSampling: YCbCr4:2:0 (2 2)"), facts);
        return ImageIO.read(jpeg.toFile());
    }

    @ParameterizedTest
    @ValueSource(strings = {"i420", "nv12", "nv21", "p010"})  // an RGBA frame's has chroma of its own weights
    void still_PhotographWithoutThumbnailGetsOneThatLooksLikeIt(String format) throws Exception {
        Path photo = kPhotos.resolve(kPhone + ".jpg");
        BufferedImage small = reduced(ImageIO.read(photo.toFile()), 256, 192);
        BufferedImage thumbnail = checkedThumbnail(still(photo, "--format", format));
        double difference = difference(small, thumbnail);
        assertTrue(difference < 6, format + ": " + difference + " levels");
    }

    @Test
    void still_ThumbnailChangesNothingElseOfTheExifBlock() throws Exception {
        Path photo = kPhotos.resolve(kPhone + ".jpg");
        byte[] before = handedOver(photo);
        Path still = still(photo);
        byte[] after = exifOf(still);
        byte[] thumbnail = output("exiftool", "-b", "-ThumbnailImage", still.toString());
        assertEquals(before.length + 95 + thumbnail.length, after.length);
        assertArrayEquals(thumbnail, Arrays.copyOfRange(after, before.length + 95, after.length));
        int tiff = 6;
        int link = tiff + 10 + 12 * (before[tiff + 8] & 0xff);
        ByteBuffer.wrap(before).order(ByteOrder.LITTLE_ENDIAN).putInt(link, before.length - tiff + 1);
        assertArrayEquals(before, Arrays.copyOf(after, before.length));
    }

    @ParameterizedTest
    @ValueSource(strings = {kBigEndian, kCompact})
    void still_ExifBlockWithoutNeedOfAThumbnailIsKeptToTheByte(String name) throws Exception {
        Path photo = kPhotos.resolve(name + ".jpg");
        assertArrayEquals(handedOver(photo), exifOf(still(photo)));
    }
}
