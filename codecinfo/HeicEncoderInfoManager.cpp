#define LOG_TAG "HeicEncoderInfoManager"

#include "HeicEncoderInfoManager.h"

#include <string.h>

#include <log/log.h>
#include <media/stagefright/MediaCodecList.h>
#include <media/stagefright/foundation/MediaDefs.h>

#include "TileLayout.h"

namespace android {
namespace camera3 {

namespace {

bool isInside(int32_t width, int32_t height, const IntPair& minSize, const IntPair& maxSize) {
    return minSize.first <= width && width <= maxSize.first && minSize.second <= height && height <= maxSize.second;
}

int32_t wrappingProduct(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

int32_t wrappingDistance(int32_t a, int32_t b) {
    const uint32_t difference = static_cast<uint32_t>(a) - static_cast<uint32_t>(b);
    return static_cast<int32_t>(static_cast<int32_t>(difference) < 0 ? 0u - difference : difference);
}

}  // namespace

size_t SizePairHash::operator()(const IntPair& size) const {
    const uint32_t hash = static_cast<uint32_t>(size.first) * 31u + static_cast<uint32_t>(size.second);
    return static_cast<size_t>(static_cast<int32_t>(hash));
}

HeicEncoderInfoManager& HeicEncoderInfoManager::getInstance() {
    static HeicEncoderInfoManager instance;
    return instance;
}

HeicEncoderInfoManager::HeicEncoderInfoManager() {
    if (initialize() == OK) mInitialized = true;
}

status_t HeicEncoderInfoManager::initialize() {
    mGridDisabled = false;
    const sp<IMediaCodecList> codecsList = MediaCodecList::getInstance();
    if (codecsList == nullptr) return OK;  // a device without encoders

    const sp<AMessage> heicDetails = getCodecDetails(codecsList, MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC);
    if (!getHevcCodecDetails(codecsList, MEDIA_MIMETYPE_VIDEO_HEVC)) {
        if (heicDetails == nullptr) return OK;
        ALOGE("%s: Device must support HEVC codec if HEIC codec is available!", __FUNCTION__);
        return BAD_VALUE;
    }
    mHasHEVC = true;
    if (heicDetails == nullptr) return OK;

    const status_t res = getCodecSizeRange(MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC, heicDetails, &mHeicMinSize, &mHeicMaxSize,
                                           &mHeicFrameRates);
    if (res != OK) {
        ALOGE("%s: Failed to get HEIC codec size range: %s (%d)", __FUNCTION__, strerror(-res), res);
        return BAD_VALUE;
    }
    mHasHEIC = true;
    return OK;
}

bool HeicEncoderInfoManager::isSizeSupported(int32_t width, int32_t height, bool* useGrid, AString* hevcName) const {
    if (useGrid == nullptr) {
        ALOGE("%s: invalid parameters: useGrid %p", __FUNCTION__, useGrid);
        return false;
    }
    if (!mInitialized) return false;

    ALOGI("%s mHasHEIC %d[%d*%d-%d*%d] mHasHEVC %d[%d*%d-%d*%d], HEVCname %s", __FUNCTION__, mHasHEIC,
          mHeicMinSize.first, mHeicMinSize.second, mHeicMaxSize.first, mHeicMaxSize.second, mHasHEVC,
          mHevcMinSize.first, mHevcMinSize.second, mHevcMaxSize.first, mHevcMaxSize.second, mHevcName.c_str());

    bool grid = true;
    // A size that the HEIC encoder takes is tiled all the same: the HEVC component does the coding, and a
    // HEIC encoder promises nothing about sizes that it would code whole.
    if (!mHasHEIC || !isInside(width, height, mHeicMinSize, mHeicMaxSize)) {
        if (!mHasHEVC) return false;
        const bool takenWhole = isInside(width, height, mHevcMinSize, mHevcMaxSize);
        grid = !takenWhole || (!mGridDisabled && (width > kTileSide || height > kTileSide));
    }
    if (hevcName != nullptr) *hevcName = mHevcName;
    *useGrid = grid;
    return true;
}

FrameRateMaps::const_iterator HeicEncoderInfoManager::findClosestSize(const FrameRateMaps& maps, int32_t width,
                                                                      int32_t height) const {
    const int32_t target = wrappingProduct(width, height);
    auto best = maps.begin();
    int32_t bestDifference = INT32_MAX;
    for (auto entry = maps.begin(); entry != maps.end(); ++entry) {
        const int32_t area = wrappingProduct(entry->first.first, entry->first.second);
        const int32_t difference = wrappingDistance(area, target);
        if (difference >= bestDifference) continue;
        best = entry;
        bestDifference = difference;
    }
    return best;
}

}  // namespace camera3
}  // namespace android
