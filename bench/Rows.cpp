#include "Rows.h"

#include "Measurements.h"

namespace quill::bench {

using namespace android;

namespace {

constexpr Unit kMs{1e-3, "ms"}, kMiB{1 << 20, "MiB"};
constexpr char kSameBytes[] = "memcpy of the same bytes";
constexpr char kScaled[] = "libyuv: to NV12, and NV12Scale with boxes; uncompressed";
constexpr char kHeifEnc[] = "heif-enc at the same preset and PSNR";

/** `measure` of these arguments, in a process of its own. */
template <typename... Parameters, typename... Arguments>
std::function<Figures()> apart(Figures (*measure)(Parameters...), Arguments... arguments) {
    return [=] { return inOwnProcess([=] { return measure(arguments...); }); };
}

Row still(const char* name, Format format, const Geometry& geometry) {
    const auto both = apart(stillBesidePolling, format, geometry);
    return {name, 1.0, kMs, "whole still, free codec", "two waits of 2 ms, and 10 ms per 12 megapixels or less", both};
}

Row memory(const std::string& name, Format format, const Geometry& geometry) {
    const auto both = apart(peakBesideFrame, kFreeCodec, format, geometry, 4 * kMiB.one);
    return {name, 1.0, kMiB, "peak beside the frame, free codec", "4 MiB", both};
}

Row memoryOfX265(const char* name, Format format) {
    const auto both = apart(peakBesideFrame, kX265, format, tight(4000, 3000), 64 * kMiB.one);
    return {name, 1.0, kMiB, "peak beside the frame, x265, 12 megapixels", "64 MiB", both};
}

}  // namespace

std::vector<Row> makeRows() {
    const Geometry mp1 = tight(1152, 864), mp12 = tight(4000, 3000), mp48 = tight(8000, 6000),
                   mp200 = tight(16384, 12288);
    std::vector<Row> rows{
            {"tiles/i420", 1.5, kMs, "cutting an I420 frame into tiles", kSameBytes, apart(cutTiles, FORMAT_I420)},
            {"tiles/p010", 1.5, kMs, "cutting a P010 frame into tiles", kSameBytes, apart(cutTiles, FORMAT_P010)},
            {"tiles/rgba", 1.5, kMs, "cutting an RGBA frame into tiles", kSameBytes, apart(cutTiles, FORMAT_RGBA8888)},
            {"tiles/nv12", 1.5, kMs, "cutting an NV12 frame into tiles", kSameBytes, apart(cutTiles, FORMAT_NV12)},
            {"tiles/nv21", 1.5, kMs, "cutting an NV21 frame, swapped", kSameBytes, apart(cutTiles, FORMAT_NV21)},
            {"swap/nv21", 1.5, kMs, "NV21 chroma to NV12 in place", "one pass of reading and writing the plane",
             apart(swapChroma)},
            {"convert/i420", 1.0, kMs, "I420 to NV12", "libyuv's I420ToNV12", apart(convertFrame, FORMAT_I420)},
            {"convert/p010", 1.0, kMs, "P010 to NV12", "libyuv's Convert16To8Plane on both planes",
             apart(convertFrame, FORMAT_P010)},
            {"convert/rgba", 1.0, kMs, "RGBA to NV12", "libyuv's ABGRToNV12", apart(convertFrame, FORMAT_RGBA8888)},
            {"thumbnail/i420", 1.0, kMs, "thumbnail of an I420 frame", kScaled, apart(makeThumbnail, FORMAT_I420)},
            {"thumbnail/p010", 1.0, kMs, "thumbnail of a P010 frame", kScaled, apart(makeThumbnail, FORMAT_P010)},
            {"thumbnail/rgba", 1.0, kMs, "thumbnail of an RGBA frame", kScaled, apart(makeThumbnail, FORMAT_RGBA8888)},
            {"thumbnail/nv12", 1.5, kMs, "thumbnail of an NV12 frame", kScaled, apart(makeThumbnail, FORMAT_NV12)},
            {"thumbnail/nv21", 1.5, kMs, "thumbnail of an NV21 frame", kScaled, apart(makeThumbnail, FORMAT_NV21)},
            {"exif", 1.5, kMs, "analysing 200 EXIF blocks and appending thumbnails", kSameBytes, apart(rewriteExif)},
            {"live-photo", 3.0, kMs, "appending a 32 MiB video", "cp of the same file", apart(appendVideo)},

            still("still/1mp", FORMAT_NV12, mp1),
            still("still/12mp", FORMAT_NV12, mp12),
            still("still/48mp", FORMAT_NV12, mp48),
            still("still/200mp", FORMAT_NV12, mp200),
            still("still/12mp-i420", FORMAT_I420, mp12),
            still("still/12mp-p010", FORMAT_P010, mp12),
            still("still/12mp-rgba", FORMAT_RGBA8888, mp12),
            still("still/12mp-nv21", FORMAT_NV21, mp12),
            {"linear/time", 1.25, kMs, "free codec, a megapixel of 200", "a megapixel of 48",
             apart(timesPerMegapixel, mp200, mp48)},
            {"linear/memory", 1.25, kMiB, "free codec, peak beside the frame, a megapixel of 200", "a megapixel of 48",
             apart(peaksPerMegapixel, mp200, mp48)},
            {"encoder/nv12", 1.05, kMs, "whole still, x265", "x265 alone on the same tiles", apart(stillBesideEncoder)},

            memoryOfX265("memory/i420", FORMAT_I420),
            memoryOfX265("memory/p010", FORMAT_P010),
            memoryOfX265("memory/rgba", FORMAT_RGBA8888),
            memoryOfX265("memory/nv12", FORMAT_NV12),
            memoryOfX265("memory/nv21", FORMAT_NV21),

            {"heif-enc/time", 1.1, kMs, "installed quill still, one photograph", kHeifEnc, timesBesideHeifEnc},
            {"heif-enc/twenty", 0.8, kMs, "the same, twenty photographs", "twenty runs", timesOfTwentyBesideHeifEnc},
            {"heif-enc/memory", 1.25, kMiB, "installed quill still: peak", kHeifEnc, peaksBesideHeifEnc},
            {"heif-enc/bytes", 1.1, kMiB, "installed quill still: size of the file", kHeifEnc, filesBesideHeifEnc},
    };
    const std::pair<std::string, Format> layouts[] = {{"", FORMAT_NV12},
                                                      {"-nv21", FORMAT_NV21},
                                                      {"-i420", FORMAT_I420},
                                                      {"-p010", FORMAT_P010},
                                                      {"-rgba", FORMAT_RGBA8888}};
    const std::pair<std::string, Geometry> sizes[] = {{"1mp", mp1}, {"12mp", mp12}, {"48mp", mp48}, {"200mp", mp200}};
    for (const auto& [layout, format] : layouts) {
        for (const auto& [size, geometry] : sizes)
            rows.push_back(memory(std::string("memory/").append(size).append(layout), format, geometry));
    }
    return rows;
}

}  // namespace quill::bench
