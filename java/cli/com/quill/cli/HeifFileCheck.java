package com.quill.cli;

import com.quill.inspect.Box;
import com.quill.inspect.BoxTree;
import com.quill.inspect.FormatException;
import com.quill.inspect.HeifSource;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;

/**
 * Whether a file is a whole HEIF file as far as its outermost boxes (ISO/IEC 14496-12) tell. A disk that fills up while
 * the muxer writes its last bytes leaves a file that only this shows to be cut short.
 */
final class HeifFileCheck {
    private HeifFileCheck() {}

    /** Returns when the file is whole; an IOException says what is wrong with it. */
    static void check(Path path) throws IOException {
        boxes(path);
    }

    /** The outermost boxes of a file that is whole. */
    static List<Box> boxes(Path path) throws IOException {
        try (HeifSource file = new HeifSource(path)) {
            if (file.size() == 0) throw new IOException("the written file is empty");
            List<Box> boxes = BoxTree.list(file, 0, file.size());
            if (!boxes.get(0).type().equals("ftyp")) throw new IOException("the written file is not a HEIF file");
            if (Box.first(boxes, "meta") == null || Box.first(boxes, "mdat") == null) {
                throw new IOException("the written file holds no picture");
            }
            return boxes;
        } catch (FormatException e) {
            throw new IOException("the written file is incomplete: " + e.getMessage(), e);
        }
    }
}
