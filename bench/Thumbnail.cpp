// The thumbnail and the EXIF block that it goes into.
#include "Downscale.h"

#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include "ExifBlock.h"
#include "Frames.h"
#include "Rows.h"
#include "Subjects.h"
#include "ThumbnailJpeg.h"

namespace quill::bench {

namespace {

using namespace android;
using Bytes = std::vector<uint8_t>;

constexpr int kThumbnailWidth = 256;
constexpr char kWithoutThumbnail[] = "phone-3264x2448.jpg";
/** A block is a matter of microseconds: this many of them are timed at once. */
constexpr int kBlocks = 200;

/** Reduced into `scratch` and compressed. */
Bytes makeThumbnail(const Nv12Frame& frame, const ThumbnailSize& size, Bytes& scratch) {
    std::fill(scratch.begin(), scratch.end(), uint8_t{0});
    downscaleNv12(frame, size, scratch.data());
    Bytes jpeg(scratch.size());
    const int bytes = compressThumbnail(scratch.data(), size, jpeg.data(), jpeg.size());
    if (bytes < 0) throw std::runtime_error("the thumbnail cannot be compressed");
    jpeg.resize(static_cast<size_t>(bytes));
    return jpeg;
}

ThumbnailSize thumbnailOf(const Geometry& frame) {
    return {kThumbnailWidth, kThumbnailWidth * frame.height / frame.width / 2 * 2};
}

Sides thumbnailSides(const Effort& effort) {
    const Geometry g = effort.frame;
    const auto bytes = std::make_shared<Bytes>(cameraFrame(readPhotograph(effort.photograph), FORMAT_NV12, g));
    const Nv12Frame frame{bytes->data(), g.width, g.height, g.stride, g.sliceHeight};
    const ThumbnailSize size = thumbnailOf(g);
    const auto small = std::make_shared<Bytes>(static_cast<size_t>(size.yuvBytes()));
    return {[=] { makeThumbnail(frame, size, *small); },
            [=] {
                libyuv::NV12Scale(bytes->data(), g.stride, bytes->data() + ptrdiff_t{g.stride} * g.sliceHeight,
                                  g.stride, g.width, g.height, small->data(), size.width,
                                  small->data() + size.lumaSamples(), size.width, size.width, size.height,
                                  libyuv::kFilterBox);
            }};
}

Sides exifSides() {
    const Photograph photograph = readPhotograph(kWithoutThumbnail);
    const auto block = std::make_shared<Bytes>(photograph.exif);
    if (analyseExifBlock({block->data(), block->size()}, 0).outcome != ExifAnalysis::kNoIfd1) {
        throw std::runtime_error(std::string(kWithoutThumbnail) + " has a thumbnail or no EXIF block");
    }
    const Geometry g{photograph.width, photograph.height, photograph.width, photograph.height};
    const Bytes frame = cameraFrame(photograph, FORMAT_NV12, g);
    const ThumbnailSize size = thumbnailOf(g);
    Bytes scratch(static_cast<size_t>(size.yuvBytes()));
    const auto jpeg = std::make_shared<Bytes>(
            makeThumbnail({frame.data(), g.width, g.height, g.stride, g.sliceHeight}, size, scratch));
    const auto out = std::make_shared<Bytes>(block->size() + kThumbnailDirectorySize + jpeg->size());
    const auto source = std::make_shared<Bytes>(out->size(), 100);
    return {[=] {
                for (int i = 0; i < kBlocks; ++i) {
                    const ExifAnalysis analysis = analyseExifBlock({block->data(), block->size()}, 0);
                    appendThumbnailDirectory({block->data(), block->size()}, analysis.initPosition,
                                             {jpeg->data(), jpeg->size()}, out->data());
                }
            },
            [=] {
                for (int i = 0; i < kBlocks; ++i) {
                    memcpy(out->data(), source->data(), out->size());
                    benchmark::ClobberMemory();
                }
            }};
}

}  // namespace

void addThumbnail(const Effort& effort) {
    addPairedRow("thumbnail", effort.pairs, [=] { return thumbnailSides(effort); });
    addPairedRow("exif", effort.pairs, exifSides);
}

}  // namespace quill::bench
