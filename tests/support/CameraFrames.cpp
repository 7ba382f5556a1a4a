#include "support/CameraFrames.h"

#include <algorithm>
#include <cmath>

namespace quill::test {

namespace {

using namespace android;

constexpr uint8_t kPadding = 0xC7;
constexpr double kSameDecibels = 100.0;

/** Sample values from 0 to 1, centre 0.5 for chroma; inside the range that has an RGB colour. */
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
        for (int x = 0; x < width; ++x) shown.y.push_back(quantised(lumaAt(x + pan, y), depth));
    }
    for (int y = 0; y < shown.chromaHeight(); ++y) {
        for (int x = 0; x < shown.chromaWidth(); ++x) {
            shown.u.push_back(quantised(uAt(2 * x + pan + 0.5, 2 * y + 0.5), depth));
            shown.v.push_back(quantised(vAt(2 * x + pan + 0.5, 2 * y + 0.5), depth));
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

/** Sample offset of a chroma sample: plane 0 is U, 1 is V. */
size_t chromaOffset(const CameraFrame& frame, int plane, size_t x, size_t y) {
    const size_t stride = static_cast<size_t>(frame.geometry.stride);
    const size_t luma = stride * static_cast<size_t>(frame.geometry.sliceHeight);
    if (frame.format == FORMAT_I420) return luma + static_cast<size_t>(plane) * (luma / 4) + stride * y / 2 + x;
    const bool second = (plane == 1) != (frame.format == FORMAT_NV21);
    return luma + stride * y + 2 * x + (second ? 1 : 0);
}

// Only the chroma that the layouts have room for: floor(height / 2) rows, and in a tight frame of odd width the last
// column's samples that still lie in the row.
void layOutYuv(CameraFrame& frame) {
    const Planes& shown = frame.shown;
    for (int y = 0; y < shown.height; ++y) {
        for (int x = 0; x < shown.width; ++x) {
            put(frame, static_cast<size_t>(y) * frame.geometry.stride + x,
                shown.y[static_cast<size_t>(y) * shown.width + x]);
        }
    }
    const int columns = std::min(shown.chromaWidth(), frame.geometry.stride / 2);
    for (int y = 0; y < shown.height / 2; ++y) {
        for (int x = 0; x < columns; ++x) {
            const size_t at = static_cast<size_t>(y) * shown.chromaWidth() + x;
            put(frame, chromaOffset(frame, 0, x, y), shown.u[at]);
            put(frame, chromaOffset(frame, 1, x, y), shown.v[at]);
        }
    }
}

void layOutRgba(CameraFrame& frame, int pan) {
    for (int y = 0; y < frame.geometry.height; ++y) {
        for (int x = 0; x < frame.geometry.width; ++x) {
            putRgba(&frame.bytes.at(4 * (static_cast<size_t>(y) * frame.geometry.stride + x)), x + pan, y);
        }
    }
}

/** Samples of one plane, row after row. */
struct Plane {
    const std::vector<uint16_t>& samples;
    int pitch;

    double at(int x, int y) const { return samples.at(static_cast<size_t>(y) * pitch + x); }
};

double planePsnr(const Plane& a, const Plane& b, int width, int height, int depth) {
    double sum = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) sum += (a.at(x, y) - b.at(x, y)) * (a.at(x, y) - b.at(x, y));
    }
    if (sum == 0) return kSameDecibels;
    const double largest = (1 << depth) - 1;
    return 10 * std::log10(largest * largest * width * height / sum);
}

}  // namespace

size_t frameBytes(InputColorFormat format, const Geometry& geometry) {
    return static_cast<size_t>(android::frameBytes(format, geometry).whole);
}

CameraFrame makeFrame(InputColorFormat format, const Geometry& geometry, int pan) {
    CameraFrame frame{geometry, format, std::vector<uint8_t>(frameBytes(format, geometry), kPadding),
                      showScene(geometry.width, geometry.height, format == FORMAT_P010 ? 10 : 8, pan)};
    format == FORMAT_RGBA8888 ? layOutRgba(frame, pan) : layOutYuv(frame);
    return frame;
}

Psnr psnr(const Planes& frame, const Planes& still) {
    const int width = frame.width / 2 * 2, height = frame.height / 2 * 2;
    if (still.width < frame.width || still.height < frame.height || still.depth != frame.depth) return {0, 0};
    const auto chroma = [&](const auto& one, const auto& other) {
        return planePsnr({one, frame.chromaWidth()}, {other, still.chromaWidth()}, width / 2, height / 2, frame.depth);
    };
    return {planePsnr({frame.y, frame.width}, {still.y, still.width}, width, height, frame.depth),
            std::min(chroma(frame.u, still.u), chroma(frame.v, still.v))};
}

}  // namespace quill::test
