#include "Frames.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "support/JpegReader.h"

namespace quill::bench {

namespace {

using namespace android;
using test::Geometry;

constexpr std::string_view kExifHead{"Exif\0\0", 6};

/** The block of the first EXIF segment: a big-endian length, itself included, lies before the head. */
std::vector<uint8_t> exifOf(const std::vector<uint8_t>& jpeg) {
    const auto head = std::search(jpeg.begin(), jpeg.end(), kExifHead.begin(), kExifHead.end());
    if (head == jpeg.end()) return {};
    const ptrdiff_t length = head[-2] * 256 + head[-1] - 2;
    return {head, head + std::min<ptrdiff_t>(length, jpeg.end() - head)};
}

const uint8_t* pixelAt(const Photograph& photograph, int x, int y) {
    const size_t row = static_cast<size_t>(y % photograph.height);
    return &photograph
                    .yuv[3 * (row * static_cast<size_t>(photograph.width) + static_cast<size_t>(x % photograph.width))];
}

uint8_t bounded(double value) { return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

void fillRgba(const Photograph& photograph, const Geometry& area, uint8_t* rgba) {
    for (int y = 0; y < area.sliceHeight; ++y) {
        for (int x = 0; x < area.stride; ++x, rgba += 4) {
            const uint8_t* const yuv = pixelAt(photograph, x, y);
            const double u = yuv[1] - 128.0, v = yuv[2] - 128.0;
            rgba[0] = bounded(yuv[0] + 1.402 * v);
            rgba[1] = bounded(yuv[0] - 0.344136 * u - 0.714136 * v);
            rgba[2] = bounded(yuv[0] + 1.772 * u);
            rgba[3] = 255;
        }
    }
}

/** Sample number of a chroma sample: plane 0 is U, 1 is V. */
size_t chromaAt(InputColorFormat format, const Geometry& area, int plane, int x, int y) {
    const int64_t luma = int64_t{area.stride} * area.sliceHeight;
    if (format == FORMAT_I420) return static_cast<size_t>(luma + plane * (luma / 4) + int64_t{area.stride} / 2 * y + x);
    const int second = (plane == 1) != (format == FORMAT_NV21) ? 1 : 0;
    return static_cast<size_t>(luma + int64_t{area.stride} * y + int64_t{2} * x + second);
}

void fillYuv(const Photograph& photograph, InputColorFormat format, const Geometry& area, uint8_t* frame) {
    const size_t sampleBytes = format == FORMAT_P010 ? 2 : 1;
    uint8_t* const highBytes = frame + sampleBytes - 1;
    size_t sample = 0;
    for (int y = 0; y < area.sliceHeight; ++y) {
        for (int x = 0; x < area.stride; ++x) highBytes[sampleBytes * sample++] = pixelAt(photograph, x, y)[0];
    }
    for (int plane = 0; plane < 2; ++plane) {
        for (int y = 0; y < area.sliceHeight / 2; ++y) {
            for (int x = 0; x < area.stride / 2; ++x) {
                highBytes[sampleBytes * chromaAt(format, area, plane, x, y)] =
                        pixelAt(photograph, 2 * x, 2 * y)[1 + plane];
            }
        }
    }
}

}  // namespace

std::string photographPath(const std::string& name) { return QUILL_SOURCE_DIR "/photos/" + name; }

Photograph readPhotograph(const std::string& name) {
    std::ifstream file(photographPath(name), std::ios::binary);
    if (!file) throw std::runtime_error("no photograph " + photographPath(name));
    const std::vector<uint8_t> jpeg(std::istreambuf_iterator<char>(file), {});
    test::ReadJpeg read = test::readJpeg(jpeg);
    return {read.width, read.height, std::move(read.yuv), exifOf(jpeg)};
}

std::vector<uint8_t> cameraFrame(const Photograph& photograph, InputColorFormat format, const Geometry& geometry) {
    std::vector<uint8_t> frame(test::frameBytes(format, geometry));
    if (format == FORMAT_RGBA8888) {
        fillRgba(photograph, geometry, frame.data());
    } else {
        fillYuv(photograph, format, geometry, frame.data());
    }
    return frame;
}

InputColorFormat formatNamed(const std::string& name) {
    static constexpr struct {
        const char* name;
        InputColorFormat format;
    } kFormats[] = {{"i420", FORMAT_I420},
                    {"p010", FORMAT_P010},
                    {"rgba", FORMAT_RGBA8888},
                    {"nv12", FORMAT_NV12},
                    {"nv21", FORMAT_NV21}};
    for (const auto& known : kFormats) {
        if (name == known.name) return known.format;
    }
    throw std::invalid_argument("no frame format is called " + name);
}

}  // namespace quill::bench
