#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <log/log.h>

#include "QuillHeifWriter.h"

namespace android {

namespace {

constexpr useconds_t kPollIntervalUs = 2000;
constexpr int kPollBudget = 5000;  // 10 s for one frame, both waits together

void poll(int* budget) {
    usleep(kPollIntervalUs);
    --*budget;
}

/** Polls until `flag` is set or the budget is spent. */
void waitFor(const std::atomic<bool>& flag, int* budget) {
    while (!flag.load(std::memory_order_acquire) && *budget > 0) poll(budget);
}

}  // namespace

int32_t QuillHeifWriter::processInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd) {
    ATRACE_NAME("processInputFrame");
    int budget = kPollBudget;
    if (!waitForLooper(&budget)) return -1;
    mEncodeDone.store(false, std::memory_order_release);
    mInputConsumed.store(false, std::memory_order_release);
    if (mInitStatus != OK) {
        ALOGE("HeifEncoder donot init or start Failed");
        return -1;
    }
    bool needsThumbnail = false;
    uint32_t initPosition = 0;
    if (!queueInputFrame(yuv, exif, exifLen, fd, &needsThumbnail, &initPosition)) return -1;
    mFrameInFlight.store(true, std::memory_order_release);
    const sp<AMessage> notify = new AMessage(kWhatProcessInputFrameNotify, this);  // ours too: it may not be taken
    notify->post();

    waitFor(mInputConsumed, &budget);
    // While the looper encodes; and even when the first wait was in vain, for the looper may yet get there.
    if (needsThumbnail) changeExif(yuv, exif, exifLen, initPosition);
    waitFor(mEncodeDone, &budget);
    const bool done = mEncodeDone.load(std::memory_order_acquire);
    ALOGD("Encode Finish: %d", done);
    return done ? 0 : -1;
}

// The looper reports a file as done before it takes the frame off the queue, and after a time-out it does both late:
// the queue and the flags are the next frame's only once it has.
bool QuillHeifWriter::waitForLooper(int* budget) const {
    while (isFrameInFlight() && *budget > 0) poll(budget);
    return !isFrameInFlight();
}

bool QuillHeifWriter::queueInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd, bool* needsThumbnail,
                                      uint32_t* initPosition) {
    InputFrame frame{yuv, nullptr, 0, -1, 0};
    if (exifLen != 0) {
        frame.exifData = static_cast<uint8_t*>(malloc(exifLen));
        if (frame.exifData == nullptr) {
            ALOGE("inputFrame.exifData malloc fail");
            return false;
        }
        memcpy(frame.exifData, exif, exifLen);
        *needsThumbnail = analysisExif(exif, exifLen, *initPosition);
    }
    frame.exifSize = exifLen;
    frame.fd = fd;
    frame.isFileFd = 1;
    ALOGD("INPUT FRAME ADD (INPUTFRAME)");
    mExifState.store(kExifFree, std::memory_order_relaxed);  // the posted message makes it visible to the looper
    mInputFrames.push_back(frame);
    ALOGD("input frame size : %zu", mInputFrames.size());
    return true;
}

void QuillHeifWriter::addExifData(uint8_t* /* exif */, uint32_t /* exifLen */) {}

}  // namespace android
