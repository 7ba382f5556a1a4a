#define LOG_TAG "QuillHeifEncoder"

#include <string.h>

#include <log/log.h>
#include <media/MediaCodecBuffer.h>
#include <media/stagefright/MediaErrors.h>

#include "QuillHeifEncoder.h"
#include "StatusNames.h"
#include "SystemProperties.h"

namespace android {

namespace {

constexpr int64_t kOutputTimeoutUs = 10000;
constexpr uint32_t kCodedPicture = MediaCodec::BUFFER_FLAG_SYNCFRAME;

status_t warnNoOutput(status_t err) {
    ALOGW("Received error %d (%s) instead of output", err, statusName(err));
    return err;
}

/** Null when there is no memory for it, or the codec's buffer has none. */
sp<ABuffer> copyOf(const sp<MediaCodecBuffer>& coded) {
    const size_t size = coded->size();
    if (size > 0 && coded->data() == nullptr) return nullptr;
    const sp<ABuffer> copy = new ABuffer(size);
    if (copy->size() != size) return nullptr;
    if (size > 0) memcpy(copy->data(), coded->data(), size);
    return copy;
}

}  // namespace

status_t QuillHeifEncoder::drainOutput(Draining* draining, std::vector<sp<ABuffer>>& out) {
    for (;;) {
        size_t index, offset, size;
        int64_t timeUs;
        uint32_t flags;
        const status_t err = mCodec->dequeueOutputBuffer(&index, &offset, &size, &timeUs, &flags, kOutputTimeoutUs);
        switch (err) {
            case OK:
                return collectOutput(index, flags, draining, out);
            case INFO_OUTPUT_BUFFERS_CHANGED:
                if (isVerboseLogEnabled()) ALOGD("Output buffers changed");
                break;
            case INFO_FORMAT_CHANGED:
                if (isVerboseLogEnabled()) ALOGD("Received format change");
                if (const status_t got = mCodec->getOutputFormat(&mOutputFormat); got != OK) return got;
                break;
            case WOULD_BLOCK:
                // The budget is the frame's: output that did arrive does not refill it.
                if (--draining->retriesLeft == 0) return warnNoOutput(err);
                if (isVerboseLogEnabled()) {
                    ALOGD("Timed-out waiting for output.. retries left = %zu", draining->retriesLeft);
                }
                return OK;
            default:
                return warnNoOutput(err);
        }
        // Without this limit a codec that only announces changes would keep us in the loop.
        if (--draining->newsLeft == 0) return warnNoOutput(err);
    }
}

status_t QuillHeifEncoder::collectOutput(size_t index, uint32_t flags, Draining* draining,
                                         std::vector<sp<ABuffer>>& out) {
    sp<MediaCodecBuffer> coded;
    status_t err = mCodec->getOutputBuffer(index, &coded);
    if (err == OK && coded == nullptr) err = NO_MEMORY;
    if (err != OK) {
        ALOGE("failed to get output buffer %zu", index);
        return err;
    }
    // Exactly a picture: parameter sets travel in the format, and a picture flagged as the end of the stream is a
    // component's closing marker, not a tile.
    if (flags == kCodedPicture) {
        err = keepTile(copyOf(coded), draining, out);
    } else if (--draining->newsLeft == 0) {
        err = warnNoOutput(WOULD_BLOCK);
    }
    mCodec->releaseOutputBuffer(index);
    return err;
}

status_t QuillHeifEncoder::keepTile(const sp<ABuffer>& tile, Draining* draining, std::vector<sp<ABuffer>>& out) {
    if (tile == nullptr) return NO_MEMORY;
    out.push_back(tile);
    ++draining->collected;
    draining->newsLeft = kNewsWithoutTile;
    return OK;
}

}  // namespace android
