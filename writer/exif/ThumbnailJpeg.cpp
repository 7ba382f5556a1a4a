#include "ThumbnailJpeg.h"

#include <setjmp.h>
#include <stdio.h>  // jpeglib.h needs it first
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>

#include <jpeglib.h>

#include "Nv12Conversion.h"

namespace android {

namespace {

constexpr int kThmbJpegQuality = 80;
constexpr int kMcuRows = 2 * DCTSIZE;  // luma rows of one row of blocks in 4:2:0

/** The library's own error manager with a way back in place of its exit(). */
struct ErrorManager {
    jpeg_error_mgr base;  // first: the library knows this part only
    jmp_buf returnPoint;
};

[[noreturn]] void leaveCompression(j_common_ptr compressor) {
    longjmp(reinterpret_cast<ErrorManager*>(compressor->err)->returnPoint, 1);
}

void staySilent(j_common_ptr) {}

/** What the compression holds that outlives a jump out of the library. */
struct Compression {
    jpeg_compress_struct compressor;
    ErrorManager errors;
    unsigned char* jpeg;
    unsigned long jpegSize;
};

void configure(jpeg_compress_struct& compressor, const ThumbnailSize& size) {
    compressor.image_width = static_cast<JDIMENSION>(size.width);
    compressor.image_height = static_cast<JDIMENSION>(size.height);
    compressor.input_components = 3;
    compressor.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&compressor);
    jpeg_set_quality(&compressor, kThmbJpegQuality, TRUE /* force baseline */);
    compressor.raw_data_in = TRUE;
    compressor.optimize_coding = TRUE;
    for (int component = 0; component < compressor.num_components; ++component) {
        const int factor = component == 0 ? 2 : 1;
        compressor.comp_info[component].h_samp_factor = factor;
        compressor.comp_info[component].v_samp_factor = factor;
    }
}

/**
 * `planes`: Y, then U and V of a quarter of its size each, without padding. Rows past the bottom keep the pointers of
 * the group before: they lie outside the picture but inside its last blocks. In a picture of one group they repeat its
 * last row.
 */
void writeRows(jpeg_compress_struct& compressor, const ThumbnailSize& size, uint8_t* planes) {
    const ptrdiff_t width = size.width, lastLine = size.height - 1;
    uint8_t* const u = planes + size.lumaSamples();
    uint8_t* const v = u + size.lumaSamples() / 4;
    JSAMPROW yRows[kMcuRows], uRows[kMcuRows / 2], vRows[kMcuRows / 2];
    std::fill(std::begin(yRows), std::end(yRows), planes + lastLine * width);
    std::fill(std::begin(uRows), std::end(uRows), u + lastLine / 2 * (width / 2));
    std::fill(std::begin(vRows), std::end(vRows), v + lastLine / 2 * (width / 2));
    JSAMPARRAY rows[] = {yRows, uRows, vRows};
    while (compressor.next_scanline < compressor.image_height) {
        for (int i = 0; i < kMcuRows; ++i) {
            const ptrdiff_t line = static_cast<ptrdiff_t>(compressor.next_scanline) + i;
            if (line > lastLine) break;
            yRows[i] = planes + line * width;
            if (i % 2 == 0) uRows[i / 2] = u + line * width / 4;
            if (i % 2 == 0) vRows[i / 2] = v + line * width / 4;
        }
        jpeg_write_raw_data(&compressor, rows, kMcuRows);
    }
}

/** False when the library gave up. No object with a destructor lives in here: the library jumps out over it. */
bool compress(Compression& work, const ThumbnailSize& size, uint8_t* planes) {
    work.compressor.err = jpeg_std_error(&work.errors.base);
    work.errors.base.error_exit = leaveCompression;
    work.errors.base.output_message = staySilent;
    if (setjmp(work.errors.returnPoint) != 0) return false;
    jpeg_create_compress(&work.compressor);
    configure(work.compressor, size);
    jpeg_mem_dest(&work.compressor, &work.jpeg, &work.jpegSize);
    jpeg_start_compress(&work.compressor, TRUE /* all tables */);
    writeRows(work.compressor, size, planes);
    jpeg_finish_compress(&work.compressor);
    return true;
}

}  // namespace

bool isJpegSize(const ThumbnailSize& size) {
    return size.width >= 1 && size.height >= 1 && size.width <= JPEG_MAX_DIMENSION && size.height <= JPEG_MAX_DIMENSION;
}

int compressThumbnail(const uint8_t* nv12, const ThumbnailSize& size, uint8_t* out, size_t capacity) {
    if (!isJpegSize(size)) return -1;
    const int32_t samples = size.lumaSamples();
    // A chroma row more than there is: an odd number of rows would end in half of one. And the library reads each row
    // to the end of its last block.
    const size_t spare = 2 * static_cast<size_t>(size.width) + DCTSIZE;
    const std::unique_ptr<uint8_t[]> planar(new (std::nothrow) uint8_t[static_cast<size_t>(size.yuvBytes()) + spare]());
    if (planar == nullptr) return -1;
    splitNv12(nv12, samples, planar.get(), planar.get() + samples, planar.get() + samples + samples / 4);

    Compression work{};
    const bool done = compress(work, size, planar.get());
    const bool fits = done && work.jpegSize <= capacity;
    if (fits) memcpy(out, work.jpeg, work.jpegSize);
    // Until it is finished, the library may have outgrown the buffer that it told of first.
    if (!done && work.jpeg != nullptr) work.compressor.dest->term_destination(&work.compressor);
    free(work.jpeg);
    jpeg_destroy_compress(&work.compressor);
    return fits ? static_cast<int>(work.jpegSize) : -1;
}

}  // namespace android
