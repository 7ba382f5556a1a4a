#include "support/HeifReader.h"

#include <algorithm>

#include <libheif/heif_cxx.h>

namespace quill::test {

namespace {

constexpr size_t kOffsetField = 4;

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

Planes planesOf(const heif::Image& image) {
    return {image.get_width(heif_channel_Y),
            image.get_height(heif_channel_Y),
            image.get_bits_per_pixel_range(heif_channel_Y),
            planeOf(image, heif_channel_Y),
            planeOf(image, heif_channel_Cb),
            planeOf(image, heif_channel_Cr)};
}

/** Bodies of the metadata items of `type`, each from its byte `begin` on. */
template <typename Body>
void readMetadata(const heif::ImageHandle& image, const char* type, size_t begin, std::vector<Body>* bodies) {
    for (const heif_item_id id : image.get_list_of_metadata_block_IDs(type)) {
        const std::vector<uint8_t> body = image.get_metadata(id);
        bodies->emplace_back(body.begin() + static_cast<ptrdiff_t>(std::min(begin, body.size())), body.end());
    }
}

}  // namespace

ReadStill readStill(const std::string& path, bool decode) {
    ReadStill still;
    try {
        heif::Context file;
        file.read_from_file(path);
        heif::ImageHandle image = file.get_primary_image_handle();
        still.topLevelImages = file.get_number_of_top_level_images();
        still.shownWidth = image.get_width();
        still.shownHeight = image.get_height();
        readMetadata(image, "Exif", kOffsetField, &still.exif);
        readMetadata(image, "mime", 0, &still.xmp);
        if (decode) still.planes = planesOf(image.decode_image(heif_colorspace_YCbCr, heif_chroma_420));
    } catch (const heif::Error& error) {
        still.error = error.get_message();
    }
    return still;
}

}  // namespace quill::test
