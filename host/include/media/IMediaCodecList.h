#pragma once

#include <stddef.h>
#include <sys/types.h>

#include <binder/IInterface.h>
#include <media/MediaCodecInfo.h>
#include <media/stagefright/foundation/AMessage.h>

namespace android {

/** The codecs of the device, in the order of preference that the device gives them. */
class IMediaCodecList : public IInterface {
  public:
    virtual size_t countCodecs() const = 0;
    /** Null when `index` is out of range. */
    virtual sp<MediaCodecInfo> getCodecInfo(size_t index) const = 0;
    virtual const sp<AMessage> getGlobalSettings() const = 0;
    /** First codec at or after `startIndex` that handles `type`; NAME_NOT_FOUND when there is none. */
    virtual ssize_t findCodecByType(const char* type, bool encoder, size_t startIndex = 0) const = 0;
    /** NAME_NOT_FOUND when there is none of that name. */
    virtual ssize_t findCodecByName(const char* name) const = 0;
};

/** What an implementation of the list derives from. */
class BnMediaCodecList : public IMediaCodecList {};

}  // namespace android
