package com.quill.inspect;

import java.io.IOException;
import java.util.ArrayList;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;

/** Reads item properties (ISO/IEC 23008-12, 14496-12, 14496-15). */
final class Properties {
    private static final int kMaxText = 200;
    private static final int kMaxChannels = 16;

    private static final Map<Integer, String> kPrimaries = Map.of(1, "BT.709", 5, "BT.601-625", 6, "BT.601-525", 9,
            "BT.2020", 12, "Display P3");
    private static final Map<Integer, String> kTransfers = Map.of(1, "BT.709", 6, "BT.601", 8, "linear", 13, "sRGB",
            14, "BT.2020 10 bit", 16, "PQ", 18, "HLG");
    private static final Map<Integer, String> kMatrices = Map.of(0, "RGB", 1, "BT.709", 5, "BT.601-625", 6,
            "BT.601-525", 9, "BT.2020");
    private static final Map<Integer, String> kHevcProfiles =
            Map.of(1, "Main", 2, "Main 10", 3, "Main Still Picture", 4, "Format Range Extensions");
    private static final String[] kChromaFormats = {"4:0:0", "4:2:0", "4:2:2", "4:4:4"};
    private static final int kHevcLevelUnit = 30;

    /** Reads the payload of one type: names the values and returns the text. */
    private interface Explainer {
        String explain(ByteReader in, Map<String, Object> values) throws FormatException;
    }

    private static final Map<String, Explainer> kExplainers = Map.of("ispe", Properties::explainSize, "pixi",
            Properties::explainPixels, "colr", Properties::explainColor, "hvcC", Properties::explainHevc, "irot",
            Properties::explainRotation, "imir", Properties::explainMirror, "clap", Properties::explainAperture, "pasp",
            Properties::explainAspect, "auxC", Properties::explainAuxiliary, "clli", Properties::explainLight);

    private Properties() {}

    /** The properties of an 'ipco' box in its order. */
    static List<Property> read(HeifSource source, Box container, Problems problems) throws IOException {
        List<Property> properties = new ArrayList<>();
        for (Box box : container.children()) {
            properties.add(read(source, box, properties.size() + 1, problems));
        }
        return properties;
    }

    private static Property read(HeifSource source, Box box, int index, Problems problems) throws IOException {
        Map<String, Object> values = new LinkedHashMap<>();
        String[] text = {box.payloadSize() + " bytes"};
        Explainer explainer = kExplainers.get(box.type());
        if (explainer != null) {
            problems.guard("the property '" + box.type() + "' at " + box.offset(), () -> {
                byte[] payload = source.load(box.payloadOffset(), box.payloadSize());
                text[0] = explainer.explain(new ByteReader(payload), values);
            });
        }
        return new Property(index, box.type(), values, text[0]);
    }

    private static long put(Map<String, Object> values, String name, long value) {
        values.put(name, value);
        return value;
    }

    private static String named(Map<Integer, String> names, int value) {
        return names.getOrDefault(value, Integer.toString(value));
    }

    private static void skipVersionAndFlags(ByteReader in) throws FormatException {
        in.skip(4);
    }

    private static String explainSize(ByteReader in, Map<String, Object> values) throws FormatException {
        skipVersionAndFlags(in);
        return put(values, "width", in.u32()) + "x" + put(values, "height", in.u32());
    }

    private static String explainPixels(ByteReader in, Map<String, Object> values) throws FormatException {
        skipVersionAndFlags(in);
        List<Long> bits = new ArrayList<>();
        StringBuilder text = new StringBuilder();
        int channels = in.u8();
        if (channels > kMaxChannels) throw new FormatException("has " + channels + " channels");
        for (int left = channels; left > 0; --left) {
            long depth = in.u8();
            text.append(bits.isEmpty() ? "" : ", ").append(depth);
            bits.add(depth);
        }
        values.put("bitsPerChannel", bits);
        return text + " bits";
    }

    private static String explainColor(ByteReader in, Map<String, Object> values) throws FormatException {
        String type = in.fourCc();
        values.put("colorType", type);
        if (!type.equals("nclx")) {
            return Printable.of(type) + ", " + put(values, "profileSize", in.remaining()) + " bytes";
        }
        int primaries = (int) put(values, "primaries", in.u16());
        int transfer = (int) put(values, "transfer", in.u16());
        int matrix = (int) put(values, "matrix", in.u16());
        boolean fullRange = (in.u8() & 0x80) != 0;
        values.put("fullRange", fullRange);
        return "nclx, primaries " + named(kPrimaries, primaries) + ", transfer " + named(kTransfers, transfer)
                + ", matrix " + named(kMatrices, matrix) + (fullRange ? ", full range" : ", limited range");
    }

    /** The decoder configuration record of ISO/IEC 14496-15. */
    private static String explainHevc(ByteReader in, Map<String, Object> values) throws FormatException {
        in.skip(1);  // version
        int profile = (int) put(values, "profile", in.u8() & 0x1f);
        in.skip(4 + 6);  // compatibility, constraints
        int level = (int) put(values, "level", in.u8());
        in.skip(2 + 1);  // segmentation, parallelism
        int chroma = (int) put(values, "chromaFormat", in.u8() & 3);
        long luma = put(values, "lumaBits", (in.u8() & 7) + 8);
        put(values, "chromaBits", (in.u8() & 7) + 8);
        in.skip(2);  // frame rate
        put(values, "lengthSize", (in.u8() & 3) + 1);
        String levelText = String.valueOf(level / (double) kHevcLevelUnit);
        return "HEVC " + named(kHevcProfiles, profile) + ", level " + Printable.shortened(levelText, 4) + ", "
                + kChromaFormats[chroma] + ", " + luma + " bits";
    }

    private static String explainRotation(ByteReader in, Map<String, Object> values) throws FormatException {
        int quartersToTheLeft = in.u8() & 3;
        return put(values, "clockwiseDegrees", (4 - quartersToTheLeft) % 4 * 90) + " degrees clockwise";
    }

    private static String explainMirror(ByteReader in, Map<String, Object> values) throws FormatException {
        return put(values, "axis", in.u8() & 1) == 0 ? "top and bottom exchanged" : "left and right exchanged";
    }

    private static String explainAperture(ByteReader in, Map<String, Object> values) throws FormatException {
        String width = putFraction(in, values, "width");
        String height = putFraction(in, values, "height");
        return width + "x" + height + ", centre moved by " + putFraction(in, values, "horizontalOffset") + ", "
                + putFraction(in, values, "verticalOffset");
    }

    private static String putFraction(ByteReader in, Map<String, Object> values, String name) throws FormatException {
        int numerator = in.s32();
        long denominator = in.u32();
        boolean whole = denominator != 0 && numerator % denominator == 0;
        String text = whole ? Long.toString(numerator / denominator) : numerator + "/" + denominator;
        values.put(name, text);
        return text;
    }

    private static String explainAspect(ByteReader in, Map<String, Object> values) throws FormatException {
        return put(values, "horizontalSpacing", in.u32()) + ":" + put(values, "verticalSpacing", in.u32());
    }

    private static String explainAuxiliary(ByteReader in, Map<String, Object> values) throws FormatException {
        skipVersionAndFlags(in);
        String type = Printable.shortened(in.text(), kMaxText);
        values.put("auxiliaryType", type);
        return Printable.of(type);
    }

    private static String explainLight(ByteReader in, Map<String, Object> values) throws FormatException {
        return "at most " + put(values, "maxContentLight", in.u16()) + " cd/m2, "
                + put(values, "maxAverageLight", in.u16()) + " on average";
    }
}
