package com.quill.cli;

import java.io.EOFException;
import java.io.IOException;
import java.io.RandomAccessFile;
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
    static List<FileBox> boxes(Path path) throws IOException {
        try (RandomAccessFile file = new RandomAccessFile(path.toFile(), "r")) {
            if (file.length() == 0) throw new IOException("the written file is empty");
            List<FileBox> boxes = FileBox.list(file, 0, file.length());
            if (!boxes.get(0).mType.equals("ftyp")) throw new IOException("the written file is no HEIF file");
            if (FileBox.find(boxes, "meta") == null || FileBox.find(boxes, "mdat") == null) {
                throw new IOException("the written file holds no picture");
            }
            return boxes;
        } catch (EOFException e) {
            throw new IOException("the written file is incomplete", e);
        }
    }
}
