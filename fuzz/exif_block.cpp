// The input is an EXIF block. One that is to get a thumbnail is given one, and has it then.
#include <memory>

#include "ByteSource.h"
#include "ExifBlock.h"

using namespace android;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ExifBytes block{data, size};
    // Where the header is taken to be when none is found, as a caller of the interface may have it.
    for (const uint32_t position : {1u, static_cast<uint32_t>(size), UINT32_MAX}) analyseExifBlock(block, position);
    const ExifAnalysis analysis = analyseExifBlock(block, 0);
    if (analysis.outcome != ExifAnalysis::kNoIfd1) return 0;
    const ExifBytes thumbnail{data, size / 2};  // any bytes will do
    const size_t newSize = size + kThumbnailDirectorySize + thumbnail.size;
    const std::unique_ptr<uint8_t[]> out(new uint8_t[newSize]);
    appendThumbnailDirectory(block, analysis.initPosition, thumbnail, out.get());
    const ExifAnalysis again = analyseExifBlock({out.get(), newSize}, 0);
    quill::fuzz::require(again.outcome == ExifAnalysis::kHasIfd1 && again.initPosition == analysis.initPosition,
                         "found again, with an IFD1");
    return 0;
}
