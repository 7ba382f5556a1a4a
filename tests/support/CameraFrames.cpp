#include "support/CameraFrames.h"

#include <algorithm>
#include <cmath>

namespace quill::test {

namespace {

using namespace android;

constexpr uint8_t kPadding = 0xC7;

/** Sample values from 0 to 1, centre 0.5 for chroma; inside the range that has an RGB color. */
double lumaAt(double x, double y) {
    return 0.5 + 0.2 * std::sin(x / 83 + y / 131) + 0.1 * std::cos(y / 57) +
           0.02 * std::sin(x * 0.9) * std::sin(y * 0.7);
}
double uAt(double x, double y) { return 0.5 + 0.12 * std::sin(x / 151 - y / 97); }
double vAt(double x, double y) { return 0.5 + 0.12 * std::cos(x / 113 + y / 173 + 1.0); }

uint16_t quantised(double value, int depth) {
    const double largest = (1 << depth) - 1;
    return static_cast<uint16_t>(std::clamp(std::lround(value * largest), 0l, std::lround(largest)));
}

Planes showScene(int width, int height, int depth, int pan) {
    Planes shown{width, height, depth, {}, {}, {}};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            shown.y.push_back(quantised(lumaAt(x + pan, y), depth));
            if (x % 2 != 0 || y % 2 != 0) continue;
            shown.u.push_back(quantised(uAt(x + pan + 0.5, y + 0.5), depth));
            shown.v.push_back(quantised(vAt(x + pan + 0.5, y + 0.5), depth));
        }
    }
    return shown;
}

/** ITU-R BT.601, full range. */
void putRgba(uint8_t* pixel, int x, int y) {
    const double luma = lumaAt(x, y), u = uAt(x, y) - 0.5, v = vAt(x, y) - 0.5;
    pixel[0] = static_cast<uint8_t>(quantised(luma + 1.402 * v, 8));
    pixel[1] = static_cast<uint8_t>(quantised(luma - 0.344136 * u - 0.714136 * v, 8));
    pixel[2] = static_cast<uint8_t>(quantised(luma + 1.772 * u, 8));
    pixel[3] = 0xFF;
}

/** Writes one sample of one or, for P010, two bytes. */
void put(CameraFrame& frame, size_t sample, uint16_t value) {
    if (frame.format != FORMAT_P010) {
        frame.bytes.at(sample) = static_cast<uint8_t>(value);
        return;
    }
    const unsigned inHighBits = static_cast<unsigned>(value) << 6;
    frame.bytes.at(2 * sample) = static_cast<uint8_t>(inHighBits);
    frame.bytes.at(2 * sample + 1) = static_cast<uint8_t>(inHighBits >> 8);
}

// Only the chroma that the layouts have room for: floor(height / 2) rows, and in a tight frame of odd width the last
// column's samples that still lie in the row.
void layOutYuv(CameraFrame& frame) {
    const Planes& shown = frame.shown;
    const size_t stride = static_cast<size_t>(frame.geometry.stride);
    const size_t luma = stride * static_cast<size_t>(frame.geometry.sliceHeight);
    for (int y = 0; y < shown.height; ++y) {
        for (int x = 0; x < shown.width; ++x) put(frame, stride * y + x, shown.y.at(size_t{1} * shown.width * y + x));
    }
    const int width = (shown.width + 1) / 2;
    for (int y = 0; y < shown.height / 2; ++y) {
        for (int x = 0; x < std::min(width, frame.geometry.stride / 2); ++x) {
            const bool planar = frame.format == FORMAT_I420, vFirst = frame.format == FORMAT_NV21;
            const size_t first = luma + (planar ? stride * y / 2 + x : stride * y + 2 * x);
            const size_t second = first + (planar ? luma / 4 : 1);
            put(frame, vFirst ? second : first, shown.u.at(static_cast<size_t>(y) * width + x));
            put(frame, vFirst ? first : second, shown.v.at(static_cast<size_t>(y) * width + x));
        }
    }
}

}  // namespace

size_t frameBytes(InputColorFormat format, const Geometry& geometry) {
    return static_cast<size_t>(android::frameBytes(format, geometry).whole);
}

CameraFrame makeFrame(InputColorFormat format, const Geometry& geometry, int pan) {
    CameraFrame frame{geometry, format, std::vector<uint8_t>(frameBytes(format, geometry), kPadding),
                      showScene(geometry.width, geometry.height, format == FORMAT_P010 ? 10 : 8, pan)};
    if (format != FORMAT_RGBA8888) layOutYuv(frame);
    for (int y = 0; format == FORMAT_RGBA8888 && y < geometry.height; ++y) {
        for (int x = 0; x < geometry.width; ++x) {
            putRgba(&frame.bytes.at(4 * (static_cast<size_t>(y) * geometry.stride + x)), x + pan, y);
        }
    }
    return frame;
}

double psnr(const Planes& frame, const Planes& still) {
    if (still.width < frame.width || still.height < frame.height || still.depth != frame.depth) return 0;
    const double largest = (1 << frame.depth) - 1;
    double worst = 100;
    for (const auto plane : {&Planes::y, &Planes::u, &Planes::v}) {
        const int step = plane == &Planes::y ? 1 : 2, width = frame.width / 2 * 2 / step;
        const int height = frame.height / 2 * 2 / step;
        const size_t pitch = (frame.width + step - 1) / step, stillPitch = (still.width + step - 1) / step;
        double sum = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const double difference = (frame.*plane).at(pitch * y + x) - (still.*plane).at(stillPitch * y + x);
                sum += difference * difference;
            }
        }
        if (sum > 0) worst = std::min(worst, 10 * std::log10(largest * largest * width * height / sum));
    }
    return worst;
}

}  // namespace quill::test
