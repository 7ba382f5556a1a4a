#include "Frames.h"

#include <libyuv.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "Measuring.h"

namespace quill::bench {

using namespace android;

namespace {

Bytes nv12Frame(int width, int height) {
    const Bytes jpeg = readPhotograph(kPhotograph);
    int w = 0, h = 0;
    libyuv::MJPGSize(jpeg.data(), jpeg.size(), &w, &h);
    Bytes photograph(test::frameBytes(FORMAT_NV12, {w, h, w, h}));
    Bytes frame(test::frameBytes(FORMAT_NV12, {width, height, width, height}));
    uint8_t *const from = photograph.data(), *const to = frame.data();
    const ptrdiff_t luma = ptrdiff_t{w} * h, frameLuma = ptrdiff_t{width} * height;
    if (libyuv::MJPGToNV12(jpeg.data(), jpeg.size(), from, w, from + luma, w, w, h, w, h) != 0 ||
        libyuv::NV12Scale(from, w, from + luma, w, w, h, to, width, to + frameLuma, width, width, height,
                          libyuv::kFilterBilinear) != 0) {
        throw std::runtime_error("libyuv cannot decode and scale " + photographPath(kPhotograph));
    }
    return frame;
}

}  // namespace

Geometry tight(int width, int height) {
    const int part = quick ? 4 : 1;
    return {width / part, height / part, width / part, height / part};
}

Geometry padded() {
    const Geometry picture = tight(4000, 3000);
    return {picture.width, picture.height, picture.width + 32, picture.height + 8};
}

std::string photographPath(const std::string& name) { return QUILL_SOURCE_DIR "/photos/" + name; }

Bytes readPhotograph(const std::string& name) {
    std::ifstream file(photographPath(name), std::ios::binary);
    if (!file) throw std::runtime_error("no photograph " + photographPath(name));
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/** A big-endian length, itself included, lies before the head. */
Bytes cameraExif() {
    constexpr std::string_view kHead{"Exif\0\0", 6};
    const Bytes jpeg = readPhotograph(kPhotograph);
    const auto head = std::search(jpeg.begin(), jpeg.end(), kHead.begin(), kHead.end());
    if (head == jpeg.end()) throw std::runtime_error(photographPath(kPhotograph) + " has no EXIF block");
    return {head, head + ptrdiff_t{head[-2]} * 256 + head[-1] - 2};
}

Bytes cameraFrame(Format format, const Geometry& g) {
    const int s = g.stride, rows = g.sliceHeight;
    Bytes nv12 = nv12Frame(s, rows);
    if (format == FORMAT_NV12) return nv12;
    Bytes frame(test::frameBytes(format, g));
    const ptrdiff_t luma = ptrdiff_t{s} * rows;
    const uint8_t *const y = nv12.data(), *const uv = y + luma;
    uint8_t* const to = frame.data();
    if (format == FORMAT_I420) {
        libyuv::NV12ToI420(y, s, uv, s, to, s, to + luma, s / 2, to + luma + luma / 4, s / 2, s, rows);
    } else if (format == FORMAT_NV21) {
        libyuv::NV21ToNV12(y, s, uv, s, to, s, to + luma, s, s, rows);
    } else if (format == FORMAT_RGBA8888) {
        libyuv::NV12ToABGR(y, s, uv, s, to, 4 * s, s, rows);  // R, G, B, A in memory
    } else {
        for (size_t i = 0; i < nv12.size(); ++i) frame[2 * i + 1] = nv12[i];  // P010, high bytes
    }
    return frame;
}

}  // namespace quill::bench
