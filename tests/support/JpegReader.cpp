#include "support/JpegReader.h"

#include <stdio.h>  // jpeglib.h needs it first

#include <jpeglib.h>

namespace quill::test {

ReadJpeg readJpeg(const std::vector<uint8_t>& jpeg) {
    jpeg_decompress_struct in{};
    jpeg_error_mgr errors{};
    in.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&in);
    jpeg_mem_src(&in, jpeg.data(), jpeg.size());
    jpeg_read_header(&in, TRUE);
    bool is420 = in.num_components == 3 && in.jpeg_color_space == JCS_YCbCr;
    for (int i = 0; is420 && i < 3; ++i) {
        const int factor = i == 0 ? 2 : 1;
        is420 = in.comp_info[i].h_samp_factor == factor && in.comp_info[i].v_samp_factor == factor;
    }
    const bool isBaseline = in.saw_JFIF_marker == TRUE && in.data_precision == 8 && in.progressive_mode == FALSE &&
                            in.arith_code == FALSE;
    ReadJpeg read{static_cast<int>(in.image_width), static_cast<int>(in.image_height), is420 && isBaseline, 0, 0, {}};
    in.out_color_space = JCS_YCbCr;
    in.do_fancy_upsampling = FALSE;
    jpeg_start_decompress(&in);
    read.coarseness = in.quant_tbl_ptrs[0]->quantval[DCTSIZE2 - 1];
    const size_t pitch = size_t{3} * in.image_width;
    read.yuv.resize(pitch * in.image_height);
    while (in.output_scanline < in.image_height) {
        JSAMPROW row = &read.yuv[pitch * in.output_scanline];
        jpeg_read_scanlines(&in, &row, 1);
    }
    jpeg_finish_decompress(&in);
    read.warnings = errors.num_warnings;
    jpeg_destroy_decompress(&in);
    return read;
}

}  // namespace quill::test
