#pragma once

#include <stdint.h>
#include <stdlib.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include <media/stagefright/MediaMuxer.h>
#include <utils/RefBase.h>

#include "Lease.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

/**
 * One queued frame. The looper works on it and on nothing else of the writer's that changes after `start`. What it
 * needs beyond the caller's call is the frame's own; what is the caller's is lent.
 */
struct QuillHeifWriter::InputFrame : public RefBase {
    using Block = std::unique_ptr<uint8_t, void (*)(void*)>;

    /** Takes a duplicate of `outputFd`: the caller's number may soon be that of another file. -1 if there is none. */
    InputFrame(uint8_t* pixels, int outputFd, const sp<QuillHeifEncoder>& codec);

    /** Caller: nothing of his is touched from now on, unless a muxer is writing to his file at this moment. */
    void endLending();
    /** The one who has the frame last: gives up what is its own. */
    void drop();

    uint8_t* const yuv;  ///< the caller's pixels, under `pixelLease`
    Lease pixelLease;
    Lease fileLease;  ///< of the caller's file
    Lease workLease;  ///< of the frame as a whole: in use while the looper works on it

    Lease exifLease;  ///< of the block, lent to the caller until the looper revokes it to read it
    Block exifData{nullptr, free};
    uint32_t exifSize = 0;
    std::string xmp;  ///< the packet, empty for none
    int32_t fd;
    int32_t isFileFd = 1;  ///< 0 would mean a destination in memory, which is not supported
    sp<QuillHeifEncoder> encoder;
    sp<MediaMuxer> muxer;
    bool muxerStarted = false;
    std::vector<int32_t> trackIndices;  ///< of the muxer, one an image

    std::atomic<bool> inputConsumed{false};  ///< looper: from now on the pixels are only read
    std::atomic<bool> encodeDone{false};     ///< looper: the file is finished

  protected:
    ~InputFrame() override;
};

}  // namespace android
