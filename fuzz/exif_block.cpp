// The input is an EXIF block. One that is to get a thumbnail is given one, and the result read back.
#include <string.h>

#include <memory>

#include "ByteSource.h"
#include "ExifBlock.h"

namespace {

using namespace android;
using quill::fuzz::require;

constexpr uint8_t kUnwritten = 0xA5;

uint32_t littleEndian(const uint8_t* data, int bytes) {
    uint32_t value = 0;
    for (int i = bytes; i-- > 0;) value = value << 8 | data[i];
    return value;
}

/** Value of entry `number`, which has to be that of `tag`, in the directory at `directory`. */
uint32_t valueOf(const uint8_t* directory, int number, uint32_t tag) {
    const uint8_t* const entry = directory + 2 + 12 * number;
    require(littleEndian(entry, 2) == tag && littleEndian(entry + 4, 4) == 1, "a directory's entries in their order");
    return littleEndian(entry + 8, 4);
}

void checkDirectory(const uint8_t* tiff, uint32_t end, uint32_t link, ExifBytes thumbnail) {
    const uint32_t offset = littleEndian(tiff + link, 4);
    require(offset == end + 1, "IFD1 one byte behind the old block");
    const uint8_t* const directory = tiff + offset;
    require(littleEndian(directory, 2) == 6 && littleEndian(directory + 2 + 6 * 12, 4) == 0, "six entries, no IFD2");
    require(valueOf(directory, 0, 0x0103) == 6, "compression");
    require(valueOf(directory, 3, 0x0128) == 2, "unit of the resolution");
    for (const int resolution : {1, 2}) {
        const uint8_t* const value = tiff + valueOf(directory, resolution, 0x0119 + resolution);
        require(littleEndian(value, 4) == 72 && littleEndian(value + 4, 4) == 1, "72 dots an inch");
    }
    const uint8_t* const jpeg = tiff + valueOf(directory, 4, 0x0201);
    require(valueOf(directory, 5, 0x0202) == thumbnail.size, "length of the thumbnail");
    require(jpeg == tiff + end + kThumbnailDirectorySize, "the thumbnail last");
    require(thumbnail.size == 0 || memcmp(jpeg, thumbnail.data, thumbnail.size) == 0, "the thumbnail's bytes");
}

void checkAppended(ExifBytes block, uint32_t header) {
    const ExifBytes thumbnail{block.data, block.size / 2};  // any bytes will do
    const size_t size = block.size + kThumbnailDirectorySize + thumbnail.size;
    const std::unique_ptr<uint8_t[]> out(new uint8_t[size]);
    memset(out.get(), kUnwritten, size);
    appendThumbnailDirectory(block, header, thumbnail, out.get());

    const uint32_t link = 10 + 12 * littleEndian(block.data + header + 8, 2);
    const size_t behindLink = header + link + 4;
    require(memcmp(out.get(), block.data, header + link) == 0 &&
                    memcmp(out.get() + behindLink, block.data + behindLink, block.size - behindLink) == 0,
            "old bytes but for the link kept");
    require(out[block.size] == kUnwritten, "one spare byte");
    checkDirectory(out.get() + header, static_cast<uint32_t>(block.size) - header, link, thumbnail);

    const ExifAnalysis again = analyseExifBlock({out.get(), size}, 0);
    require(again.outcome == ExifAnalysis::kHasIfd1 && again.initPosition == header, "found again, with an IFD1");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ExifBytes block{data, size};
    // Where the header is taken to be when none is found, as a caller of the interface may have it.
    for (const uint32_t position : {0u, 1u, static_cast<uint32_t>(size), UINT32_MAX}) {
        const ExifAnalysis analysis = analyseExifBlock(block, position);
        if (analysis.outcome == ExifAnalysis::kNoIfd1 && position == 0) checkAppended(block, analysis.initPosition);
    }
    return 0;
}
