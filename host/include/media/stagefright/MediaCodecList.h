#pragma once

#include <vector>

#include <media/IMediaCodecList.h>
#include <media/MediaCodecInfo.h>
#include <media/stagefright/foundation/ABase.h>

namespace android {

/** The list read from the device's media_codecs.xml. Immutable, so queries may come from any thread. */
struct MediaCodecList : public BnMediaCodecList {
    /** The list of this process, read at the first call; null if the device has no codec list. */
    static sp<IMediaCodecList> getInstance();

    sp<MediaCodecInfo> getCodecInfo(size_t index) const override;
    ssize_t findCodecByType(const char* type, bool encoder, size_t startIndex = 0) const override;

  private:
    explicit MediaCodecList(std::vector<sp<MediaCodecInfo>> codecs);
    static sp<IMediaCodecList> read();

    const std::vector<sp<MediaCodecInfo>> mCodecs;
    DISALLOW_EVIL_CONSTRUCTORS(MediaCodecList);
};

}  // namespace android
