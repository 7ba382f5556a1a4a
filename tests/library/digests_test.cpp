// One digest per byte-exact result, the same on every processor and compiler. QUILL_UPDATE_DIGESTS=1 writes the list
// anew: a change there is a change of what is in people's files.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "BoxAppender.h"
#include "ExifBlock.h"
#include "Nv12Conversion.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"
#include "TileLayout.h"
#include "support/CameraFrames.h"
#include "support/TemporaryFiles.h"

namespace {

using namespace android;
using namespace quill::test;

using Bytes = std::vector<uint8_t>;
using Digests = std::map<std::string, std::string>;

constexpr uint8_t kUntouched = 0xA5;
constexpr std::pair<InputColorFormat, const char*> kFormats[] = {
        {FORMAT_I420, "i420"}, {FORMAT_P010, "p010"}, {FORMAT_RGBA8888, "rgba"},
        {FORMAT_NV12, "nv12"}, {FORMAT_NV21, "nv21"},
};

/** FNV-1a, 64 bits. Every step is one-to-one in state and byte, so that no change of one byte goes unseen. */
std::string digestOf(const Bytes& bytes) {
    uint64_t state = 0xCBF29CE484222325;
    for (const uint8_t byte : bytes) state = (state ^ byte) * 0x100000001B3;
    char text[17];
    snprintf(text, sizeof(text), "%016llx", static_cast<unsigned long long>(state));
    return text;
}

/** Defined to the bit by the C++ standard, unlike its distributions and the C library's rand. */
Bytes noise(size_t count) {
    std::minstd_rand random(static_cast<unsigned>(count) + 1);
    Bytes bytes(count);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 8);
    return bytes;
}

std::string name(const Geometry& g) {
    return std::to_string(g.width) + "x" + std::to_string(g.height) + "-" + std::to_string(g.stride) + "x" +
           std::to_string(g.sliceHeight);
}

/** Frame to NV12, and NV12 to the pixels of the thumbnail, as the writer chains them. */
void addPixels(Digests& digests) {
    constexpr Geometry kGeometries[] = {{1, 1, 1, 1},     {5, 3, 7, 4},         {9, 7, 12, 10},      {65, 63, 65, 63},
                                        {61, 41, 64, 48}, {641, 479, 643, 481}, {1000, 30, 1024, 32}};
    for (const auto& [format, label] : kFormats) {
        for (const Geometry& g : kGeometries) {
            Bytes frame = noise(frameBytes(format, g));
            if (format == FORMAT_NV21) swapChromaPairs(frame.data(), g);
            const sp<QuillHeifWriter> writer = new QuillHeifWriter;
            writer->initEncoder(g.width, g.height, g.stride, g.sliceHeight, format, 95, 0);
            Bytes nv12(4 * static_cast<size_t>(g.stride + 1) * static_cast<size_t>(g.sliceHeight + 1), kUntouched);
            EXPECT_EQ(1, writer->saveYuvBuf(frame.data(), nv12.data()));
            digests[std::string("convert/") + label + "/" + name(g)] = digestOf(nv12);
            Bytes thumbnail(writer->thumbnailCapacity(), kUntouched);  // not zeros: sums of chroma reach their limit
            writer->subsamplingYuv(nv12.data(), thumbnail.data());
            digests[std::string("thumbnail/") + label + "/" + name(g)] = digestOf(thumbnail);
            writer->close();
        }
    }
}

void addTiles(Digests& digests) {
    constexpr Geometry kGeometries[] = {{300, 200, 320, 208}, {515, 1030, 515, 1030}, {1001, 701, 1003, 709}};
    constexpr int kSurfaceStride = 576;
    for (const auto& [format, label] : kFormats) {
        for (const Geometry& g : kGeometries) {
            Bytes frame = noise(frameBytes(format, g) + 1);
            const sp<QuillHeifEncoder> encoder =
                    new QuillHeifEncoder(g.width, g.height, g.stride, g.sliceHeight, format, 95);
            const int tiles = ((g.width + 511) / 512) * ((g.height + 511) / 512);
            for (int k = 0; k < tiles; ++k) {
                Bytes tile(size_t{4} * kSurfaceStride * 512, kUntouched);
                encoder->fillInputBuffer(tile.data(), frame.data(), k, kSurfaceStride);
                const std::string what = std::string(label) + "/" + name(g) + "/" + std::to_string(k);
                digests["tile/" + what] = digestOf(tile);
                if (format == FORMAT_I420) continue;
                fillSurfaceTile(tile.data(), frame.data(), *findFrameFormat(format), g, k, {kSurfaceStride, 512});
                digests["surface/" + what] = digestOf(tile);
            }
        }
    }
}

void addWholeFrames(Digests& digests) {
    constexpr int kWidth = 1030, kHeight = 1540, kTiles = 6, kAlignedWidth = 1088, kAlignedHeight = 1600;
    Bytes frame = noise(size_t{3} * kWidth * kHeight);
    Bytes eight(size_t{393216} * kTiles), ten(size_t{786432} * kTiles);
    Bytes aligned(size_t{3} * kAlignedWidth * kAlignedHeight, kUntouched);
    const sp<QuillHeifEncoder> encoder = new QuillHeifEncoder(kWidth, kHeight, kWidth, kHeight, FORMAT_P010, 95);
    encoder->splitYuvData(frame.data(), kWidth, kHeight, eight.data());
    encoder->split10BitYuvData(frame.data(), kWidth, kHeight, ten.data());
    encoder->bufferAlign(frame.data(), kWidth, kHeight, kAlignedWidth, kAlignedHeight, aligned.data());
    digests["whole/8-bit"] = digestOf(eight);
    digests["whole/10-bit"] = digestOf(ten);
    digests["whole/aligned"] = digestOf(aligned);
}

/** `framing`, a little-endian TIFF header and an IFD0 of `entries` entries of noise that links to no other. */
Bytes exifBlock(const std::string& framing, uint8_t entries, size_t dataBytes) {
    Bytes block(framing.begin(), framing.end());
    block.insert(block.end(), {'I', 'I', 42, 0, 8, 0, 0, 0, entries, 0});
    const Bytes filled = noise(size_t{12} * entries), data = noise(dataBytes);
    block.insert(block.end(), filled.begin(), filled.end());
    block.insert(block.end(), 4, 0);
    block.insert(block.end(), data.begin(), data.end());
    return block;
}

void addExif(Digests& digests) {
    const std::string exif("Exif\0\0", 6), app1 = "\xFF\xE1\x04" + std::string(1, '\0') + exif;
    const std::pair<const char*, Bytes> kBlocks[] = {
            {"exif", exifBlock(exif, 11, 900)},
            {"app1", exifBlock(app1, 3, 77)},
            {"empty-directory", exifBlock(exif, 0, 0)},
            {"many-entries", exifBlock(exif, 200, 60001)},
    };
    for (const auto& [label, block] : kBlocks) {
        const ExifAnalysis analysis = analyseExifBlock({block.data(), block.size()}, 0);
        ASSERT_EQ(ExifAnalysis::kNoIfd1, analysis.outcome) << label;
        const Bytes jpeg = noise(5001);
        Bytes out(block.size() + kThumbnailDirectorySize + jpeg.size(), kUntouched);
        appendThumbnailDirectory({block.data(), block.size()}, analysis.initPosition, {jpeg.data(), jpeg.size()},
                                 out.data());
        digests[std::string("exif/") + label] = digestOf(out);
    }
}

void addBoxes(Digests& digests) {
    for (const size_t size : {size_t{1}, size_t{70001}}) {
        const Bytes payload = noise(size);
        const TemporaryFile source(payload), file;
        EXPECT_TRUE(appendFileBox(file.fd(), kVideoBox, source.fd()));
        EXPECT_TRUE(appendFileBox(file.fd(), kGainMapBox, source.fd()));
        EXPECT_TRUE(appendMemoryBox(file.fd(), kExtenderBox, payload.data(), static_cast<uint32_t>(size)));
        digests["boxes/" + std::to_string(size)] = digestOf(file.bytes());
    }
}

TEST(Digests, OfEveryByteExactResultAreTheCheckedInOnes) {
    constexpr char kListPath[] = QUILL_SOURCE_DIR "/tests/digests/byte-exact.txt";
    Digests computed, expected;
    addPixels(computed);
    addTiles(computed);
    addWholeFrames(computed);
    addExif(computed);
    addBoxes(computed);
    if (getenv("QUILL_UPDATE_DIGESTS") != nullptr) {
        std::ofstream file(kListPath);
        for (const auto& [name, digest] : computed) file << name << "  " << digest << '\n';
        ASSERT_TRUE(file.flush()) << kListPath;
    }
    std::ifstream file(kListPath);
    for (std::string name, digest; file >> name >> digest;) expected[name] = digest;
    EXPECT_EQ(expected, computed);
}

}  // namespace
