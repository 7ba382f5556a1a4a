package android.media;

import java.nio.ByteBuffer;

/** A picture as a camera delivers it. The workstation has no camera, so programs make their own. */
public abstract class Image implements AutoCloseable {
    /** One plane; strides in bytes. */
    public abstract static class Plane {
        public abstract int getRowStride();

        public abstract int getPixelStride();

        public abstract ByteBuffer getBuffer();
    }

    public abstract int getFormat();

    public abstract int getWidth();

    public abstract int getHeight();

    public abstract long getTimestamp();

    public abstract Plane[] getPlanes();

    @Override
    public abstract void close();
}
