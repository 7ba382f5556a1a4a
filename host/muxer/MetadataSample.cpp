#include "MetadataSample.h"

namespace quill::host {

namespace {

using namespace std::string_view_literals;

constexpr auto kExifMark = "Exif\0\0"sv;
constexpr auto kApp1Marker = "\xFF\xE1"sv;
constexpr size_t kApp1HeaderSize = 4;  // the marker and a 16-bit length
constexpr std::string_view kTiffHeaders[] = {"II*\0"sv, "MM\0*"sv};
constexpr size_t kByteOrderSize = 2;
constexpr std::string_view kXmpBeginnings[] = {"<x:xmpmeta"sv, "<?xpacket"sv};

/** After the mark the byte order is enough; a bare TIFF header must be complete. */
bool isTiff(ByteView sample, size_t offset) {
    const size_t significant = offset > 0 ? kByteOrderSize : std::string_view::npos;
    for (std::string_view header : kTiffHeaders) {
        if (sample.holdsAt(offset, header.substr(0, significant))) return true;
    }
    return false;
}

}  // namespace

MetadataKind classifyMetadata(ByteView sample) {
    const size_t mark = sample.holdsAt(0, kApp1Marker) ? kApp1HeaderSize : 0;
    const size_t tiff = sample.holdsAt(mark, kExifMark) ? mark + kExifMark.size() : 0;
    if (isTiff(sample, tiff)) return {MetadataKind::Type::kExif, tiff};
    for (std::string_view beginning : kXmpBeginnings) {
        if (sample.holdsAt(0, beginning)) return {MetadataKind::Type::kXmp, 0};
    }
    return {};
}

}  // namespace quill::host
