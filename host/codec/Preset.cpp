#define LOG_TAG "QuillPlatform"

#include "Preset.h"

#include <cstring>

#include <cutils/properties.h>
#include <log/log.h>
#include <x265.h>

namespace quill::host {

namespace {

struct PresetRow {
    int64_t maxPixels;
    const char* preset;
};

// Processor seconds per megapixel of a photograph at quality 95, intra pictures only: slow 0.7, superfast
// 0.4, ultrafast 0.06. At equal quality a superfast file is about a twelfth smaller than an ultrafast one, a slow file
// another sixteenth. The limits keep a frame near half a second on two cores, 12 megapixels included.
constexpr PresetRow kPresets[] = {
        {1'250'000, "slow"},
        {3'200'000, "superfast"},
        {INT64_MAX, "ultrafast"},
};

constexpr char kOverride[] = "debug.quill.host.x265.preset";

bool isPreset(const char* name) {
    for (const char* const* known = x265_preset_names; *known != nullptr; ++known) {
        if (strcmp(*known, name) == 0) return true;
    }
    return false;
}

}  // namespace

std::string presetFor(int64_t framePixels) {
    char chosen[PROPERTY_VALUE_MAX];
    if (property_get(kOverride, chosen, "") > 0) {
        if (isPreset(chosen)) return chosen;
        ALOGE("%s: There is no x265 preset %s", kOverride, chosen);
    }
    for (const PresetRow& row : kPresets) {
        if (framePixels <= row.maxPixels) return row.preset;
    }
    return kPresets[0].preset;
}

}  // namespace quill::host
