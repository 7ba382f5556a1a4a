package com.quill.cli;

import com.twelvemonkeys.imageio.color.ColorProfiles;
import java.awt.color.CMMException;
import java.awt.color.ColorSpace;
import java.awt.color.ICC_ColorSpace;
import java.awt.color.ICC_Profile;
import java.awt.image.ColorConvertOp;
import java.awt.image.Raster;
import java.awt.image.WritableRaster;

/** From the colors of a profile to sRGB. */
final class ColorConversion {
    private static final float kSameColor = 1.5f / 255;  // what rounding makes of equal colors
    private static final int kSteps = 4;
    private static final float kGamutMargin = 0.02f;
    private static final int kMostLooks = 10_000;
    // Linear sRGB out of CIE XYZ at D50, by rows (IEC 61966-2-1, adapted as ICC.1 does).
    private static final float[][] kXyzToRgb = {
        {3.1339f, -1.6169f, -0.4906f}, {-0.9788f, 1.9161f, 0.0335f}, {0.0719f, -0.2290f, 1.4052f}};

    private final ICC_ColorSpace mSpace;
    private final ColorConvertOp mOperation;
    private boolean mWide;  // has colors outside sRGB, none of which has been met
    private int mLooks;

    private ColorConversion(ICC_Profile profile) {
        mSpace = new ICC_ColorSpace(profile);
        mOperation = new ColorConvertOp(mSpace, ColorSpace.getInstance(ColorSpace.CS_sRGB), null);
        mWide = isWide();
    }

    /**
     * What a profile asks for; null when it asks for nothing, which is so for sRGB and for a profile that cannot be
     * used. That one is a loss.
     */
    static ColorConversion of(byte[] profile, int components, Losses losses) {
        if (profile == null) return null;
        try {
            return of(ColorProfiles.createProfile(profile), components, losses);
        } catch (IllegalArgumentException | CMMException e) {
            losses.add("a damaged color profile (taken for sRGB)");
            return null;
        }
    }

    /** As above, for a profile that has been read. */
    static ColorConversion of(ICC_Profile profile, int components, Losses losses) {
        if (profile.getNumComponents() != components) {
            losses.add("a color profile for other colors than the picture's (taken for sRGB)");
            return null;
        }
        ColorConversion conversion = new ColorConversion(profile);
        return conversion.changesNothing() ? null : conversion;
    }

    int components() {
        return mSpace.getNumComponents();
    }

    void convert(Raster from, WritableRaster to, Losses losses) {
        mOperation.filter(from, to);
        if (mWide && clips(from, to)) {
            losses.add("colors outside sRGB (nearest ones in their place)");
            mWide = false;  // said
        }
    }

    /** Whether a color was outside sRGB. Those that were have an extreme component now: the others are passed over. */
    private boolean clips(Raster from, Raster to) {
        int[] shown = to.getPixels(0, 0, to.getWidth(), to.getHeight(), (int[]) null);
        int maximum = (1 << to.getSampleModel().getSampleSize(0)) - 1;
        float[] stored = new float[components()];
        for (int i = 0; i < shown.length && mLooks < kMostLooks; i += 3) {
            if (!isExtreme(shown, i, maximum)) continue;
            ++mLooks;
            int pixel = i / 3;
            from.getPixel(from.getMinX() + pixel % to.getWidth(), from.getMinY() + pixel / to.getWidth(), stored);
            for (int c = 0; c < stored.length; ++c) stored[c] /= maximum;
            if (isOutside(stored)) return true;
        }
        return false;
    }

    private static boolean isExtreme(int[] rgb, int at, int maximum) {
        boolean extreme = false;
        for (int c = at; c < at + 3; ++c) extreme |= rgb[c] == 0 || rgb[c] == maximum;
        return extreme && (rgb[at] != rgb[at + 1] || rgb[at] != rgb[at + 2]);
    }

    private boolean changesNothing() {
        int components = components();
        if (components > 3) return false;
        int colors = (int) Math.pow(kSteps, components);
        for (int color = 0; color < colors; ++color) {
            float[] stored = color(color, components);
            float[] shown = mSpace.toRGB(stored);
            for (int i = 0; i < shown.length; ++i) {
                if (Math.abs(shown[i] - stored[components == 1 ? 0 : i]) > kSameColor) return false;
            }
        }
        return true;
    }

    /** One of the colors of an even grid over all. */
    private static float[] color(int index, int components) {
        float[] color = new float[components];
        int rest = index;
        for (int i = 0; i < components; ++i, rest /= kSteps) color[i] = rest % kSteps / (kSteps - 1f);
        return color;
    }

    /** True if some color, out of all ones and zeros, lies outside sRGB. */
    private boolean isWide() {
        if (components() != 3) return false;
        for (int corner = 0; corner < 8; ++corner) {
            if (isOutside(new float[] {corner & 1, corner >> 1 & 1, corner >> 2})) return true;
        }
        return false;
    }

    private boolean isOutside(float[] color) {
        float[] xyz = mSpace.toCIEXYZ(color);
        for (float[] row : kXyzToRgb) {
            float linear = row[0] * xyz[0] + row[1] * xyz[1] + row[2] * xyz[2];
            if (linear < -kGamutMargin || linear > 1 + kGamutMargin) return true;
        }
        return false;
    }
}
