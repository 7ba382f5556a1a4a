#pragma once

#include <stdint.h>

#include <map>
#include <string>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <utils/RefBase.h>

namespace quill::host {
struct CodecEntry;
}

namespace android {

/** What the device's codec list says about one codec. Immutable. */
struct MediaCodecInfo : public RefBase {
    /** What the codec supports for one media type. */
    struct Capabilities : public RefBase {
        /** Strings "size-range", "feature-bitrate-modes", ...; a feature without a value is an int32, 1 if required. */
        const sp<AMessage> getDetails() const;

      protected:
        Capabilities() = default;

      private:
        sp<AMessage> mDetails;
        friend struct MediaCodecInfo;
        DISALLOW_EVIL_CONSTRUCTORS(Capabilities);
    };

    enum Attributes : int32_t {
        kFlagIsEncoder = 1,
        kFlagIsVendor = 2,
        kFlagIsSoftwareOnly = 4,
        kFlagIsHardwareAccelerated = 8,
    };

    /** From one entry of the device's codec list. */
    explicit MediaCodecInfo(const quill::host::CodecEntry& entry);

    bool isEncoder() const;
    Attributes getAttributes() const;
    /** Lives as long as this object. */
    const char* getCodecName() const;
    /** Null if the codec does not support `mediaType`; letter case is ignored. */
    const sp<Capabilities> getCapabilitiesFor(const char* mediaType) const;

  private:
    std::string mName;
    int32_t mAttributes;
    std::map<std::string, sp<Capabilities>> mCapabilities;  // by media type in lower case
    DISALLOW_EVIL_CONSTRUCTORS(MediaCodecInfo);
};

}  // namespace android
