// Single steps of the library.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "BoxAppender.h"
#include "ExifBlock.h"
#include "Measurements.h"
#include "Nv12Conversion.h"
#include "QuillHeifEncoder.h"
#include "Thumbnail.h"
#include "ThumbnailJpeg.h"
#include "support/TemporaryFiles.h"

namespace quill::bench {

using namespace android;

Figures cutTiles(Format format) {
    const Geometry g = padded();
    // A codec hands out a few input buffers again and again; the stand-in has four to eight, by the machine.
    std::vector<Bytes> buffers(8, Bytes(test::frameBytes(format, {kTileSide, kTileSide, kTileSide, kTileSide})));
    const int tiles = (g.width + kTileSide - 1) / kTileSide * ((g.height + kTileSide - 1) / kTileSide);
    Bytes frame(test::frameBytes(format, g), 100);
    const sp<QuillHeifEncoder> encoder =
            new QuillHeifEncoder(g.width, g.height, g.stride, g.sliceHeight, format, 95 /* quality */);
    const auto cut = [&] {
        for (int i = 0; i < tiles; ++i) {
            encoder->fillInputBuffer(buffers[i % buffers.size()].data(), frame.data(), i, kTileSide);
        }
    };
    // Tiles carry every row that the frame is allotted, without the padding beside it.
    Bytes copy(test::frameBytes(format, {g.width, g.sliceHeight, g.width, g.sliceHeight}));
    return fastest(cut, [&] { memcpy(copy.data(), frame.data(), copy.size()); });
}

Figures swapChroma() {
    const Geometry g = padded();
    const auto luma = g.samples();
    Bytes frame(static_cast<size_t>(luma * 3 / 2), 100);
    const auto swap = [&] { swapChromaPairs(frame.data(), g); };
    const auto pass = [&] { std::for_each(frame.begin() + luma, frame.end(), [](uint8_t& byte) { byte = ~byte; }); };
    return fastest(swap, pass);
}

namespace {

/** To NV12 by libyuv; of a semi-planar frame nothing is left to do. */
void convertByLibyuv(Format format, const Geometry& g, const uint8_t* frame, uint8_t* y) {
    const int s = g.stride, rows = g.sliceHeight, luma = s * rows;
    uint8_t* const uv = y + luma;
    if (format == FORMAT_I420) {
        libyuv::I420ToNV12(frame, s, frame + luma, s / 2, frame + luma + luma / 4, s / 2, y, s, uv, s, s, rows);
    } else if (format == FORMAT_P010) {
        // libyuv has no routine from P010 to NV12. Its planes are two of 16-bit samples, of which this one keeps
        // the high bytes: the same work.
        constexpr int kHighByte = 256;
        const auto* const samples = reinterpret_cast<const uint16_t*>(frame);
        libyuv::Convert16To8Plane(samples, s, y, s, kHighByte, s, rows);
        libyuv::Convert16To8Plane(samples + luma, s, uv, s, kHighByte, s, rows / 2);
    } else if (format == FORMAT_RGBA8888) {
        // R, G, B, A in memory is what libyuv calls ABGR. Its arithmetic is another one (limited range, chroma of
        // the mean of four pixels); the memory that is read and written is the same.
        libyuv::ABGRToNV12(frame, 4 * s, y, s, uv, s, s, rows);
    }
}

}  // namespace

Figures convertFrame(Format format) {
    const Geometry g = padded();
    const Bytes frame = cameraFrame(format, g);
    Bytes nv12(test::nv12Bytes(g));
    const auto ours = [&] {
        if (format == FORMAT_I420) convertI420(frame.data(), g, nv12.data());
        if (format == FORMAT_P010) convertP010(frame.data(), g, nv12.data());
        if (format == FORMAT_RGBA8888) convertRgba8888(frame.data(), g, nv12.data());
    };
    return fastest(ours, [&] { convertByLibyuv(format, g, frame.data(), nv12.data()); });
}

Figures makeThumbnail(Format format) {
    const Geometry g = padded();
    const Bytes frame = cameraFrame(format, g);
    const ThumbnailSize size{256, 256 * g.height / g.width};
    Bytes small(static_cast<size_t>(size.yuvBytes())), jpeg(small.size()), nv12(test::nv12Bytes(g));
    const auto ours = [&] {
        std::fill(small.begin(), small.end(), uint8_t{0});
        sampleThumbnail(frame.data(), *findFrameFormat(format), g, size, small.data());
        if (compressThumbnail(small.data(), size, jpeg.data(), jpeg.size()) < 0) {
            throw std::runtime_error("the thumbnail cannot be compressed");
        }
    };
    const auto libyuvs = [&] {
        const bool semiPlanar = format == FORMAT_NV12 || format == FORMAT_NV21;
        convertByLibyuv(format, g, frame.data(), nv12.data());
        const uint8_t *const y = semiPlanar ? frame.data() : nv12.data(), *const uv = y + g.samples();
        libyuv::NV12Scale(y, g.stride, uv, g.stride, g.width, g.height, small.data(), size.width,
                          &small[static_cast<size_t>(size.lumaSamples())], size.width, size.width, size.height,
                          libyuv::kFilterBox);
    };
    return fastest(ours, libyuvs);
}

Figures rewriteExif() {
    constexpr int kBlocks = 200;  // timed at once: each is a matter of a tenth of a microsecond
    const Bytes block = cameraExif(), thumbnail(10000, 100);
    if (analyseExifBlock({block.data(), block.size()}, 0).outcome != ExifAnalysis::kNoIfd1) {
        throw std::runtime_error(std::string(kPhotograph) + " has a thumbnail or no EXIF block");
    }
    Bytes out(block.size() + kThumbnailDirectorySize + thumbnail.size());
    const Bytes source(out.size(), 100);
    const auto rewrite = [&] {
        for (int i = 0; i < kBlocks; ++i) {
            const ExifAnalysis analysis = analyseExifBlock({block.data(), block.size()}, 0);
            appendThumbnailDirectory({block.data(), block.size()}, analysis.initPosition,
                                     {thumbnail.data(), thumbnail.size()}, out.data());
        }
    };
    const auto copy = [&] {
        for (int i = 0; i < kBlocks; ++i) {
            memcpy(out.data(), source.data(), out.size());
            benchmark::ClobberMemory();
        }
    };
    return fastest(rewrite, copy);
}

Figures appendVideo() {
    const test::TemporaryFile video, copied;
    std::ofstream(video.path()) << std::string(32 << 20, 'v');
    const auto append = [&] {
        const test::TemporaryFile photo;
        if (!appendFileBox(photo.fd(), kVideoBox, video.fd())) throw std::runtime_error("cannot append the video");
    };
    // Bytes are copied, not shared, where the file system could share them.
    return fastest(append, [&] { runShell("cp --reflink=never " + video.path() + " " + copied.path()); });
}

}  // namespace quill::bench
