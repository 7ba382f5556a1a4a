#include "support/HeifReader.h"

#include <algorithm>

#include <libheif/heif_cxx.h>

namespace quill::test {

namespace {

std::vector<uint16_t> planeOf(const heif::Image& image, heif_channel channel) {
    int pitch = 0;
    const uint8_t* row = image.get_plane(channel, &pitch);
    const bool wide = image.get_bits_per_pixel_range(channel) > 8;
    std::vector<uint16_t> samples;
    for (int y = 0; y < image.get_height(channel); ++y, row += pitch) {
        for (int x = 0; x < image.get_width(channel); ++x) {
            samples.push_back(wide ? static_cast<uint16_t>(row[2 * x] | row[2 * x + 1] << 8) : row[x]);
        }
    }
    return samples;
}

}  // namespace

ReadStill readStill(const std::string& path, bool decode) {
    ReadStill still;
    try {
        heif::Context file;
        file.read_from_file(path);
        heif::ImageHandle handle = file.get_primary_image_handle();
        still.topLevelImages = file.get_number_of_top_level_images();
        still.shownWidth = handle.get_width();
        still.shownHeight = handle.get_height();
        for (const heif_item_id id : handle.get_list_of_metadata_block_IDs("Exif")) {
            const std::vector<uint8_t> body = handle.get_metadata(id);
            still.exif.emplace_back(body.begin() + std::min<ptrdiff_t>(4, body.end() - body.begin()), body.end());
        }
        for (const heif_item_id id : handle.get_list_of_metadata_block_IDs("mime")) {
            const std::vector<uint8_t> body = handle.get_metadata(id);
            still.xmp.emplace_back(body.begin(), body.end());
        }
        if (!decode) return still;
        const heif::Image image = handle.decode_image(heif_colorspace_YCbCr, heif_chroma_420);
        still.planes = {image.get_width(heif_channel_Y),
                        image.get_height(heif_channel_Y),
                        image.get_bits_per_pixel_range(heif_channel_Y),
                        planeOf(image, heif_channel_Y),
                        planeOf(image, heif_channel_Cb),
                        planeOf(image, heif_channel_Cr)};
    } catch (const heif::Error& error) {
        still.error = error.get_message();
    }
    return still;
}

}  // namespace quill::test
