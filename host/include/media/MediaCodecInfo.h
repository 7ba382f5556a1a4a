#pragma once

#include <stdint.h>

#include <map>
#include <string>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/RefBase.h>
#include <utils/Vector.h>

namespace quill::host {
struct CodecEntry;
}

namespace android {

/** What the device says about one codec. Immutable once built. */
struct MediaCodecInfo : public RefBase {
    struct ProfileLevel {
        uint32_t mProfile;
        uint32_t mLevel;
        bool operator<(const ProfileLevel& other) const {
            return mProfile != other.mProfile ? mProfile < other.mProfile : mLevel < other.mLevel;
        }
    };

    /** What the codec can do for one media type. */
    struct Capabilities : public RefBase {
        void getSupportedProfileLevels(Vector<ProfileLevel>* profileLevels) const;
        void getSupportedColorFormats(Vector<uint32_t>* colorFormats) const;
        /** Strings "size-range", "feature-bitrate-modes", ...; a feature without a value is an int32, 1 when required.
         */
        const sp<AMessage> getDetails() const;

      protected:
        Capabilities() = default;

      private:
        Vector<ProfileLevel> mProfileLevels;
        Vector<uint32_t> mColorFormats;
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
    /** Appends the media types this codec handles. */
    void getSupportedMediaTypes(Vector<AString>* mediaTypes) const;
    /** Null when the codec does not handle `mediaType`; letter case does not count. */
    const sp<Capabilities> getCapabilitiesFor(const char* mediaType) const;

  private:
    std::string mName;
    int32_t mAttributes;
    std::map<std::string, sp<Capabilities>> mCapabilities;  // by media type in lower case
    DISALLOW_EVIL_CONSTRUCTORS(MediaCodecInfo);
};

}  // namespace android
