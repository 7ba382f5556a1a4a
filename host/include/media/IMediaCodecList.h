#pragma once

#include <stddef.h>
#include <sys/types.h>

#include <binder/IInterface.h>
#include <media/MediaCodecInfo.h>

namespace android {

/** The device's codecs in its order of preference. */
class IMediaCodecList : public IInterface {
  public:
    /** Null if `index` is out of range. */
    virtual sp<MediaCodecInfo> getCodecInfo(size_t index) const = 0;
    /** The first codec at or after `startIndex` that supports `type`; NAME_NOT_FOUND if there is none. */
    virtual ssize_t findCodecByType(const char* type, bool encoder, size_t startIndex = 0) const = 0;
};

/** The base of implementations of the list. */
class BnMediaCodecList : public IMediaCodecList {};

}  // namespace android
