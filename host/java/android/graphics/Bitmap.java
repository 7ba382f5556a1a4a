package android.graphics;

import java.nio.Buffer;
import java.nio.ByteBuffer;
import java.util.Objects;

/** The workstation's bitmap: pixels in direct memory without gaps between rows, read by the native bitmap functions. */
public final class Bitmap {
    /** How a pixel is stored. */
    public enum Config {
        ALPHA_8(8, 1),
        RGB_565(4, 2),
        /** Bytes in the order R, G, B, A, despite the name. */
        ARGB_8888(1, 4),
        RGBA_F16(9, 8);

        private final int mFormat;
        private final int mPixelBytes;

        Config(int format, int pixelBytes) {
            mFormat = format;
            mPixelBytes = pixelBytes;
        }
    }

    private final int mWidth;
    private final int mHeight;
    private final int mFormat;
    private final Config mConfig;
    private ByteBuffer mPixels;  // null once recycled

    private Bitmap(int width, int height, Config config) {
        mWidth = width;
        mHeight = height;
        mConfig = config;
        mFormat = config.mFormat;
        mPixels = ByteBuffer.allocateDirect(Math.toIntExact((long) getRowBytes() * height));
    }

    /** A bitmap of zero bytes; sizes in pixels, above 0. */
    public static Bitmap createBitmap(int width, int height, Config config) {
        Objects.requireNonNull(config, "config");
        if (width <= 0 || height <= 0) throw new IllegalArgumentException("width and height must be > 0");
        return new Bitmap(width, height, config);
    }

    public int getWidth() {
        return mWidth;
    }

    public int getHeight() {
        return mHeight;
    }

    public Config getConfig() {
        return mConfig;
    }

    /** Bytes from one row to the next. */
    public int getRowBytes() {
        return Math.multiplyExact(mWidth, mConfig.mPixelBytes);
    }

    /** Copies all pixels, as they are stored, from a byte buffer, starting at its position. */
    public void copyPixelsFromBuffer(Buffer source) {
        ByteBuffer pixels = pixels();
        ByteBuffer bytes = (ByteBuffer) source;
        if (bytes.remaining() < pixels.capacity()) throw new RuntimeException("Buffer not large enough for pixels");
        pixels.duplicate().put(bytes.slice().limit(pixels.capacity()));
        bytes.position(bytes.position() + pixels.capacity());
    }

    /** Copies all pixels, as they are stored, into a byte buffer, starting at its position. */
    public void copyPixelsToBuffer(Buffer target) {
        ByteBuffer bytes = (ByteBuffer) target;
        if (bytes.remaining() < pixels().capacity()) throw new RuntimeException("Buffer not large enough for pixels");
        bytes.put(pixels().duplicate());
    }

    /** Frees the pixels; the bitmap cannot be used afterwards. */
    public void recycle() {
        mPixels = null;
    }

    public boolean isRecycled() {
        return mPixels == null;
    }

    private ByteBuffer pixels() {
        if (mPixels == null) throw new IllegalStateException("Can't use a recycled bitmap");
        return mPixels;
    }

    @Override
    public String toString() {
        return mWidth + "x" + mHeight + " " + mConfig + " (native format " + mFormat + ")";
    }
}
