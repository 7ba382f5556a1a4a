import android.graphics.Bitmap;
import android.media.Image;
import com.quill.media.CameraFrame;
import java.io.File;
import java.io.RandomAccessFile;
import java.nio.ByteBuffer;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.Semaphore;

/** An app of the page's classes. Its arguments: a video, the page's packet. */
public final class App {
    /** A camera's picture with padded rows, its chroma planes two views of V, U pairs; wanted once it may be. */
    private static final class Picture extends Image {
        static final Semaphore kWanted = new Semaphore(0);

        private static Plane plane(int from, int rows, int pixelStride) {
            ByteBuffer bytes = ByteBuffer.allocateDirect(704 * rows).position(from).slice();
            return new Plane() {
                @Override public int getRowStride() { return 704; }
                @Override public int getPixelStride() { return pixelStride; }
                @Override public ByteBuffer getBuffer() { return bytes; }
            };
        }

        @Override public Plane[] getPlanes() {
            kWanted.acquireUninterruptibly();
            return new Plane[] {plane(0, 480, 1), plane(1, 240, 2), plane(0, 240, 2)};
        }

        @Override public int getFormat() { return 35; }
        @Override public int getWidth() { return 640; }
        @Override public int getHeight() { return 480; }
        @Override public long getTimestamp() { return 0; }
        @Override public void close() {}
    }

    public static void main(String[] paths) throws Exception {
        try (PhotoSaver saver = new PhotoSaver()) {
            CompletableFuture<File> saved = saver.save(new Picture(), null, 90, new File("saved.heic"));
            saver.save(new Picture(), null, 90, new File("dropped.heic")).cancel(true);
            Picture.kWanted.release(3);
            saved.get();
        }
        CameraFrame frame = new CameraFrame();
        frame.copy(new Picture());
        LivePhotos.write(frame, null, 0, new File(paths[0]), Files.readString(Path.of(paths[1])),
                new File("live.heic"));
        try (RandomAccessFile file = new RandomAccessFile("bitmap.heic", "rw")) {
            BitmapStills.write(Bitmap.createBitmap(99, 75, Bitmap.Config.ARGB_8888), file.getFD());
        }
    }
}
