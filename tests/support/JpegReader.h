#pragma once

#include <cstdint>
#include <vector>

namespace quill::test {

/** A JPEG (ITU-T T.81) as libjpeg reads it. */
struct ReadJpeg {
    int width;
    int height;
    bool baseline420;  ///< JFIF: sequential, Huffman, 8 bits, three components, chroma of half the size both ways
    int coarseness;    ///< of the finest detail of luma: the last entry of its quantisation table
    long warnings;     ///< of damaged data
    std::vector<uint8_t> yuv;  ///< Y, Cb, Cr for every pixel; chroma repeated, not interpolated
};

/** For what is a JPEG: libjpeg ends the process on anything else. */
ReadJpeg readJpeg(const std::vector<uint8_t>& jpeg);

}  // namespace quill::test
