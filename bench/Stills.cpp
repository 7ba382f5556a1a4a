// Whole stills: through a codec that costs nothing, and through x265.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "EncodePool.h"
#include "Measurements.h"
#include "QuillHeifWriter.h"
#include "TileLayout.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

using namespace android;
using host::EncodePool;

namespace {

constexpr int kQuality = 95;

/** A frame that is written as a still again and again, by a new writer each time. */
class WholeStill {
  public:
    /** Every still of a process has the same device. */
    WholeStill(const char* device, Format format, const Geometry& geometry)
            : mDevice(device), mFormat(format), mGeometry(geometry), mFrame(cameraFrame(format, geometry)) {
        setenv("QUILL_DEVICE", device, 1);
    }

    const Bytes& frame() const { return mFrame; }

    void write() {
        const test::TemporaryFile file;
        const sp<QuillHeifWriter> writer = new QuillHeifWriter;
        writer->start(mGeometry.width, mGeometry.height, mGeometry.stride, mGeometry.sliceHeight, mFormat, kQuality, 0);
        const int32_t result =
                writer->processInputFrame(mFrame.data(), mExif.data(), static_cast<uint32_t>(mExif.size()), file.fd());
        writer->close();
        writer->destroy();
        if (result != 0) throw std::runtime_error("the still was not written");
    }

    /** Bytes beside the frame. A small still, a grid too, goes before and loads the code. */
    double peak() {
        WholeStill small(mDevice, mFormat, {600, 600, 600, 600});
        return peakBytes([&] { small.write(); }, [&] { write(); });
    }

  private:
    const char* const mDevice;
    const Format mFormat;
    const Geometry mGeometry;
    Bytes mExif = cameraExif();
    Bytes mFrame;
};

double megapixels(const Geometry& geometry) { return 1e-6 * geometry.width * geometry.height; }

/** Opens the stand-in's encoder, without codec, library and file, and codes a frame of whole tiles. */
void encodeAlone(const Bytes& frame, const Geometry& g) {
    constexpr useconds_t kPauseUs = 200;
    host::CodecConfig config;
    config.width = config.height = kTileSide;
    config.gridRows = g.height / kTileSide;
    config.gridCols = g.width / kTileSide;
    config.layout = host::SampleLayout::kNv12;
    config.bitDepth = 8;
    config.quality = kQuality;
    EncodePool pool(config, [] {});
    for (int tile = 0; tile < config.pictureCount(); ++tile) {
        const int x = tile % config.gridCols * kTileSide, y = tile / config.gridCols * kTileSide;
        // Read where it lies: its chroma begins that many rows below its luma.
        const int sliceHeight = g.height - y / 2;
        const uint8_t* const luma = &frame[size_t{1} * g.width * y + x];
        pool.submit({{{*config.layout, luma, kTileSide, kTileSide, g.width, sliceHeight}}, [] {}, 0});
    }
    host::CodedPicture coded;
    for (int done = 0; done < config.pictureCount();) {
        const EncodePool::Poll poll = pool.poll(&coded);
        if (poll == EncodePool::Poll::kFailed) throw std::runtime_error("the encoder failed");
        poll == EncodePool::Poll::kPicture ? ++done : usleep(kPauseUs);
    }
}

}  // namespace

Figures stillBesidePolling(Format format, const Geometry& geometry) {
    constexpr double kSecondsPerTwelveMegapixels = 0.010;
    WholeStill still(kFreeCodec, format, geometry);
    const auto write = [&] { still.write(); };
    const auto twoPolls = [] { usleep(2000), usleep(2000); };
    const Figures figures = fastest(write, twoPolls);
    return {figures.measured, figures.bound + kSecondsPerTwelveMegapixels * std::max(1.0, megapixels(geometry) / 12)};
}

Figures stillBesideEncoder() {
    const Geometry geometry = quick ? Geometry{1024, 512, 1024, 512} : Geometry{4096, 3072, 4096, 3072};
    WholeStill still(kX265, FORMAT_NV12, geometry);
    const auto write = [&] { still.write(); };
    return fastest(write, [&] { encodeAlone(still.frame(), geometry); });
}

Figures timesPerMegapixel(const Geometry& large, const Geometry& small) {
    WholeStill one(kFreeCodec, FORMAT_NV12, large), other(kFreeCodec, FORMAT_NV12, small);
    const auto writeOne = [&] { one.write(); };
    const Figures figures = fastest(writeOne, [&] { other.write(); });
    return {figures.measured / megapixels(large), figures.bound / megapixels(small)};
}

Figures peaksPerMegapixel(const Geometry& large, const Geometry& small) {
    constexpr double kSmallestPeak = 1 << 20;  // below it other things than the picture's size decide
    const auto perMegapixel = [](const Geometry& geometry) {
        return std::max(double{kSmallestPeak}, WholeStill(kFreeCodec, FORMAT_NV12, geometry).peak()) /
               megapixels(geometry);
    };
    return {perMegapixel(large), perMegapixel(small)};
}

Figures peakBesideFrame(const char* device, Format format, const Geometry& geometry, double spare) {
    return {WholeStill(device, format, geometry).peak(), spare};
}

}  // namespace quill::bench
