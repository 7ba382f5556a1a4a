#include "Budgets.h"

#include <algorithm>
#include <stdexcept>

namespace quill::bench {

namespace {

constexpr char kSameBytes[] = "memcpy of the same bytes";
constexpr char kPolling[] = "two waits of 2 ms and 10 ms per 12 megapixels";
constexpr char kSpare[] = "64 MiB beside the frame";
constexpr char kHeifEnc[] = "heif-enc at the same preset and PSNR";

}  // namespace

const std::vector<Budget>& budgets() {
    static const std::vector<Budget> table = {
            {"tiles/i420", 1.5, Unit::kSeconds, "cutting an I420 frame into tiles", kSameBytes},
            {"tiles/p010", 1.5, Unit::kSeconds, "cutting a P010 frame into tiles", kSameBytes},
            {"tiles/rgba", 1.5, Unit::kSeconds, "cutting an RGBA frame into tiles", kSameBytes},
            {"tiles/nv12", 1.5, Unit::kSeconds, "cutting an NV12 frame into tiles", kSameBytes},
            {"tiles/nv21", 1.5, Unit::kSeconds, "cutting an NV21 frame, swapped, into tiles", kSameBytes},
            {"swap/nv21", 1.5, Unit::kSeconds, "NV21 chroma to NV12 in place",
             "one pass of reading and writing the plane"},
            {"convert/i420", 1.0, Unit::kSeconds, "I420 to NV12", "libyuv's I420ToNV12"},
            {"convert/p010", 1.0, Unit::kSeconds, "P010 to NV12", "libyuv's Convert16To8Plane on both planes"},
            {"convert/rgba", 1.0, Unit::kSeconds, "RGBA to NV12", "libyuv's ABGRToNV12"},
            {"thumbnail", 1.5, Unit::kSeconds, "thumbnail of an NV12 frame: reduced and compressed",
             "libyuv's NV12Scale, boxes, to the same size"},
            {"exif", 1.5, Unit::kSeconds, "analysing an EXIF block and appending a thumbnail", kSameBytes},
            {"live-photo", 3.0, Unit::kSeconds, "appending a 32 MiB video", "cp of the same file"},
            {"still/1mp", 1.0, Unit::kSeconds, "whole still, free codec, 1 megapixel", "two waits of 2 ms and 10 ms"},
            {"still/12mp", 1.0, Unit::kSeconds, "whole still, free codec, 12 megapixels of NV12", kPolling},
            {"still/48mp", 1.0, Unit::kSeconds, "whole still, free codec, 48 megapixels", kPolling},
            {"still/200mp", 1.0, Unit::kSeconds, "whole still, free codec, 200 megapixels", kPolling},
            {"still/12mp-i420", 1.0, Unit::kSeconds, "the same of an I420 frame", kPolling},
            {"still/12mp-p010", 1.0, Unit::kSeconds, "the same of a P010 frame", kPolling},
            {"still/12mp-rgba", 1.0, Unit::kSeconds, "the same of an RGBA frame", kPolling},
            {"linear/time", 1.25, Unit::kSeconds, "free codec, a megapixel of 200", "a megapixel of 48"},
            {"linear/memory", 1.25, Unit::kBytes, "free codec, peak beside the frame, a megapixel of 200",
             "a megapixel of 48"},
            {"encoder/nv12", 1.05, Unit::kSeconds, "whole still, x265", "x265 alone on the same tiles"},
            {"memory/nv12", 1.0, Unit::kBytes, "peak beside the frame, x265, NV12", kSpare},
            {"memory/p010", 1.0, Unit::kBytes, "peak beside the frame, x265, P010", kSpare},
            {"memory/rgba", 1.0, Unit::kBytes, "peak beside the frame, x265, RGBA", kSpare},
            {"heif-enc/time", 1.75, Unit::kSeconds, "./quill still, start of the JVM included", kHeifEnc},
            {"heif-enc/memory", 1.5, Unit::kBytes, "./quill still, JVM included: peak", kHeifEnc},
            {"heif-enc/bytes", 1.1, Unit::kBytes, "./quill still: size of the file", kHeifEnc},
    };
    return table;
}

const Budget& budgetOf(const std::string& row) {
    const std::vector<Budget>& all = budgets();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Budget& budget) { return row == budget.row; });
    if (found == all.end()) throw std::logic_error("no budget for the row " + row);
    return *found;
}

}  // namespace quill::bench
