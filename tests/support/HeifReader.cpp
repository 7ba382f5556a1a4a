#include "support/HeifReader.h"

#include <memory>

#include <libheif/heif.h>

namespace quill::test {

namespace {

template <typename Object>
using Owned = std::unique_ptr<Object, void (*)(const Object*)>;

constexpr size_t kOffsetField = 4;

std::vector<uint16_t> planeOf(const heif_image* image, heif_channel channel, int width, int height, int depth) {
    int pitch = 0;
    const uint8_t* const data = heif_image_get_plane_readonly(image, channel, &pitch);
    std::vector<uint16_t> samples;
    samples.reserve(static_cast<size_t>(width) * height);
    for (int y = 0; y < height; ++y) {
        const uint8_t* const row = data + static_cast<ptrdiff_t>(y) * pitch;
        for (int x = 0; x < width; ++x) {
            samples.push_back(depth > 8 ? static_cast<uint16_t>(row[2 * x] | row[2 * x + 1] << 8) : row[x]);
        }
    }
    return samples;
}

void readPlanes(const heif_image_handle* handle, ReadStill* still) {
    const std::unique_ptr<heif_decoding_options, void (*)(heif_decoding_options*)> options(
            heif_decoding_options_alloc(), heif_decoding_options_free);
    options->ignore_transformations = 1;
    heif_image* decoded = nullptr;
    const heif_error error = heif_decode_image(handle, &decoded, heif_colorspace_YCbCr, heif_chroma_420, options.get());
    if (error.code != heif_error_Ok) {
        still->error = error.message;
        return;
    }
    const Owned<heif_image> image(decoded, heif_image_release);
    Planes& planes = still->planes;
    planes.width = heif_image_get_width(decoded, heif_channel_Y);
    planes.height = heif_image_get_height(decoded, heif_channel_Y);
    planes.depth = heif_image_get_bits_per_pixel_range(decoded, heif_channel_Y);
    planes.y = planeOf(decoded, heif_channel_Y, planes.width, planes.height, planes.depth);
    planes.u = planeOf(decoded, heif_channel_Cb, planes.chromaWidth(), planes.chromaHeight(), planes.depth);
    planes.v = planeOf(decoded, heif_channel_Cr, planes.chromaWidth(), planes.chromaHeight(), planes.depth);
}

/** Bodies of the metadata items of `type`, each from its byte `begin` on. */
template <typename Body>
void readMetadata(const heif_image_handle* handle, const char* type, size_t begin, std::vector<Body>* bodies) {
    std::vector<heif_item_id> ids(16);
    const int count = heif_image_handle_get_list_of_metadata_block_IDs(handle, type, ids.data(), 16);
    for (int i = 0; i < count; ++i) {
        Body body(heif_image_handle_get_metadata_size(handle, ids[i]), 0);
        heif_image_handle_get_metadata(handle, ids[i], body.data());
        bodies->emplace_back(body.begin() + std::min(begin, body.size()), body.end());
    }
}

}  // namespace

ReadStill readStill(const std::string& path, bool decode) {
    ReadStill still;
    const std::unique_ptr<heif_context, void (*)(heif_context*)> context(heif_context_alloc(), heif_context_free);
    heif_error error = heif_context_read_from_file(context.get(), path.c_str(), nullptr);
    heif_image_handle* primary = nullptr;
    if (error.code == heif_error_Ok) error = heif_context_get_primary_image_handle(context.get(), &primary);
    if (error.code != heif_error_Ok) {
        still.error = error.message;
        return still;
    }
    const Owned<heif_image_handle> handle(primary, heif_image_handle_release);
    still.topLevelImages = heif_context_get_number_of_top_level_images(context.get());
    still.shownWidth = heif_image_handle_get_width(primary);
    still.shownHeight = heif_image_handle_get_height(primary);
    readMetadata(primary, "Exif", kOffsetField, &still.exif);
    readMetadata(primary, "mime", 0, &still.xmp);
    if (decode) readPlanes(primary, &still);
    return still;
}

}  // namespace quill::test
