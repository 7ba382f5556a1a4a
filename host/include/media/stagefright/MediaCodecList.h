#pragma once

#include <stdint.h>

#include <vector>

#include <media/IMediaCodecList.h>
#include <media/MediaCodecInfo.h>
#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Vector.h>

namespace android {

/** The list read from the device's media_codecs.xml. Immutable: every query may come from any thread. */
struct MediaCodecList : public BnMediaCodecList {
    enum Flags : uint32_t {
        kPreferSoftwareCodecs = 1,
        kHardwareCodecsOnly = 2,
    };

    /** The process's list, read at the first call; null when the device has no codec list at all. */
    static sp<IMediaCodecList> getInstance();

    size_t countCodecs() const override;
    sp<MediaCodecInfo> getCodecInfo(size_t index) const override;
    const sp<AMessage> getGlobalSettings() const override;
    ssize_t findCodecByType(const char* type, bool encoder, size_t startIndex = 0) const override;
    ssize_t findCodecByName(const char* name) const override;

    /** Appends the names of the codecs for `mime`, in the list's order unless `flags` say otherwise. */
    static void findMatchingCodecs(const char* mime, bool createEncoder, uint32_t flags,
                                   Vector<AString>* matchingCodecs);
    /** True for a codec that the device declares, or that by its name is, software. */
    static bool isSoftwareCodec(const AString& componentName);

  private:
    explicit MediaCodecList(std::vector<sp<MediaCodecInfo>> codecs);
    static sp<IMediaCodecList> read();

    const std::vector<sp<MediaCodecInfo>> mCodecs;
    const sp<AMessage> mGlobalSettings;
    DISALLOW_EVIL_CONSTRUCTORS(MediaCodecList);
};

}  // namespace android
