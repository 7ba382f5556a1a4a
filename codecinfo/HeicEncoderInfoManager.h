#pragma once

#include <stdint.h>

#include <unordered_map>
#include <utility>

#include <media/IMediaCodecList.h>
#include <media/stagefright/foundation/AMessage.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/StrongPointer.h>

namespace android {

namespace camera3 {

/** Width and height in pixels, or lowest and highest frames per second. */
using IntPair = std::pair<int32_t, int32_t>;

/** width * 31 + height in wrapping 32-bit arithmetic, sign-extended. */
struct SizePairHash {
    size_t operator()(const IntPair& size) const;
};

/** Measured frame rates of a codec: size -> (lowest, highest) frames per second. */
using FrameRateMaps = std::unordered_map<IntPair, IntPair, SizePairHash>;

/**
 * Answers whether a still of a given size can be encoded with the device's hardware HEVC encoder,
 * whether as a grid of 512x512 tiles, and with which component.
 *
 * Process-wide: the platform's codec list is read once, by the first `getInstance`. Never modified
 * afterwards, so every query may come from any thread.
 */
class HeicEncoderInfoManager {
  public:
    static HeicEncoderInfoManager& getInstance();

    virtual ~HeicEncoderInfoManager() = default;

    HeicEncoderInfoManager(const HeicEncoderInfoManager&) = delete;
    HeicEncoderInfoManager& operator=(const HeicEncoderInfoManager&) = delete;

    /**
     * True when a `width` x `height` still can be encoded: `*useGrid` then says whether to tile it, and
     * `*hevcName` (optional) receives the HEVC component to use. Both untouched otherwise.
     */
    bool isSizeSupported(int32_t width, int32_t height, bool* useGrid, AString* hevcName) const;

    /** The entry whose area is closest to width x height, the first met on a tie; end of an empty map. */
    FrameRateMaps::const_iterator findClosestSize(const FrameRateMaps& maps, int32_t width, int32_t height) const;

  private:
    HeicEncoderInfoManager();

    status_t initialize();
    /** Capability details of the first encoder of MIME type `name`, or null. */
    sp<AMessage> getCodecDetails(sp<IMediaCodecList> codecsList, const char* name);
    /** Adopts the first suitable HEVC encoder of the list; false when there is none. */
    bool getHevcCodecDetails(sp<IMediaCodecList> codecsList, const char* mime);
    /** Reads size range and frame rates out of `details`; `codecName` only labels the messages. */
    status_t getCodecSizeRange(const char* codecName, sp<AMessage> details, IntPair* minSize, IntPair* maxSize,
                               FrameRateMaps* frameRates);
    status_t getFrameRateMaps(sp<AMessage> details, FrameRateMaps* maps);

    /** What became of one HEVC encoder of the list. */
    enum class Candidate { kAdopted, kPassedOver, kEndsSearch };
    Candidate considerHevcCodec(const sp<MediaCodecInfo>& info, const char* mime);

    bool mInitialized = false;
    IntPair mHeicMinSize{0, 0};
    // The HEIC range starts out unbounded and the HEVC range empty: a HEIC encoder whose range cannot be
    // parsed takes every size, an HEVC encoder in the same case takes none.
    IntPair mHeicMaxSize{INT32_MAX, INT32_MAX};
    IntPair mHevcMinSize{0, 0};
    IntPair mHevcMaxSize{0, 0};
    bool mHasHEVC = false;
    bool mHasHEIC = false;
    AString mHevcName;
    FrameRateMaps mHeicFrameRates;
    FrameRateMaps mHevcFrameRates;
    bool mGridDisabled = false;
};

}  // namespace camera3
}  // namespace android
