#define LOG_TAG "QuillPlatform"

#include "CodecConfig.h"

#include <log/log.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/foundation/AString.h>

#include "PixelLayout.h"

namespace quill::host {

using android::AMessage;
using android::AString;
using android::BAD_VALUE;
using android::OK;
using android::sp;
using android::status_t;

namespace {

/** No HEVC level allows more, and every product of two sizes fits 32 bits. */
constexpr int32_t kMaxSide = 16384;
constexpr int32_t kMaxGridSide = 256;  // ISO/IEC 23008-12 counts rows and columns in a byte

constexpr int32_t kProfileMain10 = 2;
constexpr int32_t kDefaultQuality = 80;

struct LayoutRow {
    int32_t colorFormat;
    SampleLayout layout;
};

constexpr LayoutRow kLayouts[] = {
        {COLOR_FormatYUV420Planar, SampleLayout::kI420},
        {COLOR_FormatYUV420SemiPlanar, SampleLayout::kNv12},
        {COLOR_FormatYUVP010, SampleLayout::kP010},
        {kVendorP010, SampleLayout::kP010},
};

// The keys that the output format shares with the configured one.
constexpr const char* kSharedKeys[] = {
        KEY_MIME,         KEY_WIDTH,      KEY_HEIGHT,         KEY_TILE_WIDTH,  KEY_TILE_HEIGHT,    KEY_GRID_ROWS,
        KEY_GRID_COLUMNS, KEY_FRAME_RATE, KEY_COLOR_STANDARD, KEY_COLOR_RANGE, KEY_COLOR_TRANSFER,
};

int32_t intOr(const sp<AMessage>& format, const char* key, int32_t fallback) {
    int32_t value = fallback;
    format->findInt32(key, &value);
    return value;
}

bool isBetween(int32_t low, int32_t value, int32_t high) { return low <= value && value <= high; }

status_t refuse(const char* what, int32_t value) {
    ALOGE("The encoder cannot be configured with %s %d", what, value);
    return BAD_VALUE;
}

status_t parseGeometry(const sp<AMessage>& format, CodecConfig* config) {
    config->width = intOr(format, KEY_WIDTH, 0);
    config->height = intOr(format, KEY_HEIGHT, 0);
    config->gridRows = intOr(format, KEY_GRID_ROWS, 1);
    config->gridCols = intOr(format, KEY_GRID_COLUMNS, 1);
    if (!isBetween(1, config->width, kMaxSide)) return refuse(KEY_WIDTH, config->width);
    if (!isBetween(1, config->height, kMaxSide)) return refuse(KEY_HEIGHT, config->height);
    if (!isBetween(1, config->gridRows, kMaxGridSide)) return refuse(KEY_GRID_ROWS, config->gridRows);
    if (!isBetween(1, config->gridCols, kMaxGridSide)) return refuse(KEY_GRID_COLUMNS, config->gridCols);
    return OK;
}

status_t parseSamples(const sp<AMessage>& format, CodecConfig* config) {
    const int32_t profile = intOr(format, KEY_PROFILE, 0);
    if (profile != 0) config->bitDepth = profile == kProfileMain10 ? 10 : 8;
    config->aspects = colorAspectsFromKeys(intOr(format, KEY_COLOR_STANDARD, 0), intOr(format, KEY_COLOR_TRANSFER, 0),
                                           intOr(format, KEY_COLOR_RANGE, 0));
    const int32_t colorFormat = intOr(format, KEY_COLOR_FORMAT, 0);
    if (colorFormat == COLOR_FormatSurface) return OK;
    for (const LayoutRow& row : kLayouts) {
        if (row.colorFormat == colorFormat) config->layout = row.layout;
    }
    return config->layout ? OK : refuse(KEY_COLOR_FORMAT, colorFormat);
}

status_t parseRate(const sp<AMessage>& format, CodecConfig* config) {
    const int32_t mode = intOr(format, KEY_BITRATE_MODE, BITRATE_MODE_VBR);
    config->bitrate = intOr(format, KEY_BIT_RATE, 0);
    // Without a bitrate the encoder codes at constant quality, whatever the mode.
    config->constantQuality = mode == BITRATE_MODE_CQ || config->bitrate == 0;
    config->quality = intOr(format, KEY_QUALITY, kDefaultQuality);
    if (!isBetween(0, config->quality, 100)) return refuse(KEY_QUALITY, config->quality);
    if (config->bitrate < 0) return refuse(KEY_BIT_RATE, intOr(format, KEY_BIT_RATE, 0));
    return OK;
}

}  // namespace

status_t parseCodecConfig(const sp<AMessage>& format, CodecConfig* config) {
    AString mime;
    if (format == nullptr || !format->findString(KEY_MIME, &mime) || !(mime == MIMETYPE_VIDEO_HEVC)) {
        ALOGE("The encoder codes %s, not %s", MIMETYPE_VIDEO_HEVC, mime.c_str());
        return BAD_VALUE;
    }
    CodecConfig parsed;
    status_t err = parseGeometry(format, &parsed);
    if (err == OK) err = parseSamples(format, &parsed);
    if (err == OK) err = parseRate(format, &parsed);
    if (err == OK) *config = parsed;
    return err;
}

sp<AMessage> outputFormatOf(const sp<AMessage>& configured) {
    const sp<AMessage> output = new AMessage;
    for (const char* key : kSharedKeys) output->setItem(key, configured->findItem(key));
    return output;
}

}  // namespace quill::host
