#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <log/log.h>

#include "InputFrame.h"

namespace android {

namespace {

constexpr useconds_t kPollIntervalUs = 2000;
constexpr int kPollBudget = 5000;  // 10 s for one frame, both waits together

/** Polls until `flag` is set or the budget is spent. */
void waitFor(const std::atomic<bool>& flag, int* budget) {
    for (; !flag.load(std::memory_order_acquire) && *budget > 0; --*budget) usleep(kPollIntervalUs);
}

/** Ends the lending of what is the caller's with the call, in whatever way that ends. */
class Lending {
  public:
    explicit Lending(const sp<QuillHeifWriter::InputFrame>& frame) : mFrame(frame) {}
    ~Lending() { mFrame->endLending(); }
    Lending(const Lending&) = delete;
    Lending& operator=(const Lending&) = delete;

  private:
    const sp<QuillHeifWriter::InputFrame>& mFrame;
};

}  // namespace

int32_t QuillHeifWriter::processInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd) {
    ATRACE_NAME("processInputFrame");
    if (mInitStatus != OK || mEncoder == nullptr) {
        ALOGE("HeifEncoder donot init or start Failed");
        return -1;
    }
    if (mQueuedFrame != nullptr) {
        ALOGE("The encoder has had its one frame; the next one takes another writer");
        return -1;
    }
    bool needsThumbnail = false;
    uint32_t initPosition = 0;
    if (!queueInputFrame(yuv, exif, exifLen, fd, &needsThumbnail, &initPosition)) return -1;
    const Lending lending(mQueuedFrame);
    const sp<AMessage> notify = new AMessage(kWhatProcessInputFrameNotify, this);  // ours too: it may not be taken
    notify->post();

    int budget = kPollBudget;
    waitFor(mQueuedFrame->inputConsumed, &budget);
    // Out of time: the looper must not come to swap the chroma while the thumbnail is made.
    if (budget == 0) mQueuedFrame->endLending();
    if (needsThumbnail) changeExif(yuv, exif, exifLen, initPosition);
    waitFor(mQueuedFrame->encodeDone, &budget);
    mQueuedFrame->endLending();
    const bool done = mQueuedFrame->encodeDone.load(std::memory_order_acquire);
    ALOGD("Encode Finish: %d", done);
    return done ? 0 : -1;
}

bool QuillHeifWriter::queueInputFrame(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, int32_t fd, bool* needsThumbnail,
                                      uint32_t* initPosition) {
    const sp<InputFrame> frame = new InputFrame(yuv, fd, mEncoder);
    if (frame->fd < 0) return false;
    frame->xmp = mXmpData;
    if (exifLen != 0) {
        frame->exifData.reset(static_cast<uint8_t*>(malloc(exifLen)));
        if (frame->exifData == nullptr) {
            ALOGE("inputFrame.exifData malloc fail");
            return false;
        }
        memcpy(frame->exifData.get(), exif, exifLen);
        *needsThumbnail = analysisExif(exif, exifLen, *initPosition);
    }
    frame->exifSize = exifLen;
    ALOGD("INPUT FRAME ADD (INPUTFRAME)");
    mInputFrames.push_back(frame);
    ALOGD("input frame size : %zu", mInputFrames.size());
    mQueuedFrame = frame;
    return true;
}

void QuillHeifWriter::addExifData(uint8_t* /* exif */, uint32_t /* exifLen */) {}

}  // namespace android
