// Every tile against the plain definition of where a sample of a frame lies and where it goes.
#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <vector>

#include "QuillHeifEncoder.h"
#include "StatusNames.h"
#include "TileLayout.h"
#include "support/CameraFrames.h"
#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0x5A;
constexpr int kRgbaStride = 576;

Bytes noise(size_t size) {
    std::mt19937 random(7);
    Bytes bytes(size);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    return bytes;
}

/** The definition, one sample after the other. S: stride, V: vertical stride, w x h: what the tile covers. */
struct Definition {
    const Bytes& frame;
    Bytes& tile;
    int S, V, r, c, w, h;

    void nv12() const {
        for (int i = 0; i < h; ++i)
            for (int x = 0; x < w; ++x) tile.at(512 * i + x) = frame.at(512 * r * S + 512 * c + i * S + x);
        for (int i = 0; i < h / 2; ++i)
            for (int x = 0; x < w; ++x)
                tile.at(262144 + 512 * i + x) = frame.at(S * V + (512 * r * S) / 2 + 512 * c + i * S + x);
    }
    void i420() const {
        for (int i = 0; i < h; ++i)
            for (int x = 0; x < w; ++x) tile.at(512 * i + x) = frame.at(512 * r * S + 512 * c + i * S + x);
        for (int i = 0; i < h / 2; ++i) {
            for (int x = 0; x < w / 2; ++x) {
                const int u = S * V + 256 * c + (256 * r * S) / 2 + (S * i) / 2 + x;
                tile.at(262144 + 256 * i + x) = frame.at(u);
                tile.at(327680 + 256 * i + x) = frame.at(u + (S * V) / 4);
            }
        }
    }
    void p010() const {
        for (int i = 0; i < h; ++i)
            for (int b = 0; b < 2 * w; ++b)
                tile.at(1024 * i + b) = frame.at(2 * (512 * r * S) + 1024 * c + 2 * i * S + b);
        for (int i = 0; i < h / 2; ++i)
            for (int b = 0; b < 2 * w; ++b)
                tile.at(524288 + 1024 * i + b) = frame.at(2 * S * V + 512 * r * S + 1024 * c + 2 * i * S + b);
    }
    void rgba() const {
        for (int i = 0; i < h; ++i)
            for (int b = 0; b < 4 * w; ++b)
                tile.at(4 * kRgbaStride * i + b) = frame.at(4 * (512 * r * S) + 2048 * c + 4 * i * S + b);
    }
};

void expectTilesAsDefined(InputColorFormat format, const Geometry& geometry) {
    const auto [width, height, S, V] = geometry;
    Bytes frame = noise(frameBytes(format, geometry) + 1);
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(width, height, S, V, format, 95);
    const int columns = (width + 511) / 512;
    for (int k = 0; k < columns * ((height + 511) / 512); ++k) {
        const int r = k / columns, c = k % columns;
        Bytes expected(4 * kRgbaStride * 512, kUntouched);
        Bytes tile = expected;
        const Definition definition{
                frame, expected, S, V, r, c, std::min(512, width - 512 * c), std::min(512, V - 512 * r)};
        if (format == FORMAT_I420) definition.i420();
        if (format == FORMAT_P010) definition.p010();
        if (format == FORMAT_RGBA8888) definition.rgba();
        if (format == FORMAT_NV12 || format == FORMAT_NV21) definition.nv12();
        EXPECT_EQ(0, encoder->fillInputBuffer(tile.data(), frame.data(), k, kRgbaStride));
        EXPECT_TRUE(tile == expected) << "tile " << k << " of " << width << "x" << height << " stride " << S << "x" << V
                                      << " format " << format;
    }
}

TEST(TileLayout, EveryTileIsAsDefined) {
    const Geometry kGeometries[] = {
            {512, 512, 512, 512},   {300, 200, 320, 208},   {301, 199, 301, 199},    {515, 1030, 515, 1030},
            {1001, 701, 1003, 709}, {1025, 513, 1088, 600}, {1024, 500, 1024, 1040},
    };
    for (const InputColorFormat format : {FORMAT_I420, FORMAT_P010, FORMAT_RGBA8888, FORMAT_NV12, FORMAT_NV21}) {
        for (const Geometry& geometry : kGeometries) expectTilesAsDefined(format, geometry);
    }
}

TEST(TileLayout, OffsetsBeyondTwoGigabytesAreRight) {
    const FrameGeometry large{30000, 30000, 20000};
    const TileArea last = tileArea(large, 59 * 40 - 1);
    EXPECT_EQ(2ll * (30000ll * 512 * 39 + 512 * 58), p010TileCopies(large, last).planes[0].sourceOffset);
    EXPECT_EQ(4ll * (30000ll * 512 * 39 + 512 * 58), rgbaTileCopies(large, last, 512).planes[0].sourceOffset);
}

TEST(TileLayout, TileBelowTheFrameIsEmpty) {
    Bytes tile(kTileBytesYuv8, kUntouched), frame(8);
    const FrameGeometry flat{512, 512, 512};
    copyTile(tile.data(), frame.data(), nv12TileCopies(flat, tileArea(flat, 1)));
    copyTile(tile.data(), frame.data(), i420TileCopies(flat, tileArea(flat, 2)));
    EXPECT_THAT(tile, testing::Each(kUntouched));
}

TEST(TileLayout, UnknownFormatLogsAndCopiesNothing) {
    const LogCapture log;
    Bytes tile(16, kUntouched);
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(512, 512, 512, 512, 5, 95);
    EXPECT_EQ(0, encoder->fillInputBuffer(tile.data(), nullptr, 0, 512));
    EXPECT_EQ(log.lines().back(), "E/QuillHeifEncoder: fillInputBuffer: Color fmt not support 5.");
    EXPECT_THAT(tile, testing::Each(kUntouched));
}

TEST(TileLayout, BitsPerPixelFollowFormat) {
    EXPECT_EQ(32, getBitsPerPixel(FORMAT_RGBA8888));
    EXPECT_EQ(24, getBitsPerPixel(FORMAT_P010));
    for (const int other : {0, 3, 4, 7, -1}) EXPECT_EQ(12, getBitsPerPixel(other)) << other;
}

TEST(WholeFrameTiling, WholeTilesAreAsDefined) {
    constexpr int kWidth = 1040, kHeight = 1536, kColumns = 2, kTiles = 6;  // and 16 columns that fill no tile
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(1, 1, 1, 1, FORMAT_NV12, 95);
    Bytes frame = noise(frameBytes(FORMAT_P010, {kWidth, kHeight, kWidth, kHeight}));
    Bytes eight(kTiles * kTileBytesYuv8), ten(kTiles * kTileBytesP010), expectedEight, expectedTen;
    for (int k = 0; k < kTiles; ++k) {
        Bytes narrow(kTileBytesYuv8), wide(kTileBytesP010);
        Definition{frame, narrow, kWidth, kHeight, k / kColumns, k % kColumns, 512, 512}.nv12();
        Definition{frame, wide, kWidth, kHeight, k / kColumns, k % kColumns, 512, 512}.p010();
        expectedEight.insert(expectedEight.end(), narrow.begin(), narrow.end());
        expectedTen.insert(expectedTen.end(), wide.begin(), wide.end());
    }
    encoder->splitYuvData(frame.data(), kWidth, kHeight, eight.data());
    encoder->split10BitYuvData(frame.data(), kWidth, kHeight, ten.data());
    EXPECT_TRUE(eight == expectedEight);
    EXPECT_TRUE(ten == expectedTen);
}

TEST(WholeFrameTiling, AlignmentKeepsEveryRow) {
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(1, 1, 1, 1, FORMAT_P010, 95);
    constexpr int kWidth = 6, kAlignedWidth = 16, kAlignedHeight = 8;
    for (const int height : {0, 1, 7}) {
        Bytes frame = noise(2 * kWidth * (height + height / 2));
        Bytes aligned(2 * kAlignedWidth * kAlignedHeight * 3 / 2, kUntouched), expected = aligned;
        for (int row = 0; row < height + height / 2; ++row) {
            const int target = row < height ? row : kAlignedHeight + row - height;
            std::copy_n(frame.begin() + 2 * kWidth * row, 2 * kWidth, expected.begin() + 2 * kAlignedWidth * target);
        }
        EXPECT_EQ(aligned.data(),
                  encoder->bufferAlign(frame.data(), kWidth, height, kAlignedWidth, kAlignedHeight, aligned.data()));
        EXPECT_EQ(expected, aligned) << height;
    }
}

TEST(WholeFrameTiling, TwoVerbosityRules) {
    const std::pair<const char*, char> kLines[] = {{"D/splitYuvData enter", '5'},      {"D/splitYuvData end", '5'},
                                                   {"V/split10BitYuvData enter", '6'}, {"V/split10BitYuvData end", '6'},
                                                   {"I/align 2*2 to 4*4", '5'},        {"V/bufferAlign leave", '6'}};
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(2, 2, 2, 2, FORMAT_P010, 95);
    Bytes frame(64), out(256);
    for (const auto& [level, from] : {std::pair("", '5'), {"4", '4'}, {"5", '5'}, {"6", '6'}, {"none", '0'}}) {
        setProperties(std::string("debug.quill.video.log.enable=") + level);
        const LogCapture log;
        encoder->splitYuvData(frame.data(), 2, 2, out.data());
        encoder->split10BitYuvData(frame.data(), 2, 2, out.data());
        encoder->bufferAlign(frame.data(), 2, 2, 4, 4, out.data());
        std::vector<std::string> expected;
        for (const auto& [line, least] : kLines) {
            if (from >= least) expected.push_back(line);
        }
        EXPECT_EQ(expected, log.of("QuillHeifEncoder")) << level;
    }
}

TEST(StatusNames, EveryStatusHasItsName) {
    const std::pair<status_t, const char*> kNames[] = {
            {0, "NO_ERROR"},
            {INT32_MIN, "UNKNOWN_ERROR"},
            {-12, "NO_MEMORY"},
            {-38, "INVALID_OPERATION"},
            {-22, "BAD_VALUE"},
            {-2147483647, "BAD_TYPE"},
            {-2, "NAME_NOT_FOUND"},
            {-1, "PERMISSION_DENIED"},
            {-19, "NO_INIT"},
            {-17, "ALREADY_EXISTS"},
            {-32, "DEAD_OBJECT"},
            {-2147483646, "FAILED_TRANSACTION"},
            {-75, "BAD_INDEX"},
            {-61, "NOT_ENOUGH_DATA"},
            {-11, "WOULD_BLOCK"},
            {-110, "TIMED_OUT"},
            {-74, "UNKNOWN_TRANSACTION"},
            {-2147483641, "FDS_NOT_ALLOWED"},
            {-3, "??"},
            {1, "??"},
            {-1014, "??"},
    };
    for (const auto& [status, name] : kNames) EXPECT_STREQ(name, statusName(status)) << status;
}

}  // namespace
