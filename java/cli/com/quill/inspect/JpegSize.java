package com.quill.inspect;

/** The size of a JPEG picture in pixels, as its frame header (ITU-T T.81) says. */
record JpegSize(int width, int height) {
    private static final int kStartOfImage = 0xffd8;
    private static final int kFirstFrame = 0xc0;
    private static final int kLastFrame = 0xcf;
    private static final int kHuffmanTables = 0xc4;
    private static final int kExtension = 0xc8;
    private static final int kArithmeticConditioning = 0xcc;
    private static final int kStartOfScan = 0xda;
    private static final int kEndOfImage = 0xd9;

    /** A FormatException says why there is no size in {@code jpeg}. */
    static JpegSize read(ByteReader jpeg) throws FormatException {
        if (jpeg.remaining() < 2 || jpeg.u16() != kStartOfImage) throw new FormatException("is no JPEG data");
        while (true) {
            if (jpeg.u8() != 0xff) throw new FormatException("has no JPEG marker where one should be");
            int marker = jpeg.u8();
            while (marker == 0xff) marker = jpeg.u8();  // fill bytes
            if (marker == kStartOfScan || marker == kEndOfImage) throw new FormatException("has no JPEG frame header");
            int size = jpeg.u16() - 2;
            if (isFrame(marker)) return readFrame(jpeg);
            jpeg.skip(size);
        }
    }

    private static boolean isFrame(int marker) {
        return marker >= kFirstFrame && marker <= kLastFrame && marker != kHuffmanTables && marker != kExtension
                && marker != kArithmeticConditioning;
    }

    private static JpegSize readFrame(ByteReader jpeg) throws FormatException {
        jpeg.skip(1);  // bits per sample
        int height = jpeg.u16();
        return new JpegSize(jpeg.u16(), height);
    }
}
