#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include "QuillHeifWriter.h"

#include <stdlib.h>
#include <unistd.h>

#include <utility>

#include <log/log.h>
#include <media/stagefright/MediaMuxer.h>

#include "QuillHeifEncoder.h"

namespace android {

namespace {

constexpr char kLooperName[] = "QuillHeifWriter-ProcessInputFrame";
constexpr int32_t kAudioPriority = -16;  // a shot is waited for: as urgent as sound

/** What every later product of the geometry relies on: a whole picture inside the frame, and sizes that fit. */
bool isSaneGeometry(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight) {
    constexpr int64_t kLargestSampleBytes = 4;
    return width >= 1 && height >= 1 && stride >= width && sliceHeight >= height &&
           kLargestSampleBytes * stride <= INT32_MAX / sliceHeight;
}

}  // namespace

QuillHeifWriter::QuillHeifWriter() { ALOGD("QuillHeifWriter()"); }

// Frees neither the track indices nor the in-memory result: `close` and `destroy` have done so.
QuillHeifWriter::~QuillHeifWriter() {
    ALOGD("~QuillHeifWriter()");
    for (const InputFrame& frame : mInputFrames) free(frame.exifData);  // of a frame that was never finished
    mInputFrames.clear();
    mLooper.clear();
    mMuxer.clear();
    mOutputFormat.clear();
    mEncoder.clear();
}

void QuillHeifWriter::start(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight, int32_t colorFormat,
                            int32_t quality, int32_t rotation) {
    ATRACE_NAME("start");
    // A handler belongs to one looper; a second start moves it over to the new one.
    if (mLooper != nullptr) mLooper->unregisterHandler(id());
    mLooper = new ALooper;
    mLooper->setName(kLooperName);
    mLooper->start(false /* runOnCallingThread */, true /* canCallJava */, kAudioPriority);
    mLooper->registerHandler(this);
    mEncodedData = nullptr;
    mEncodedSize = 0;

    // Ready, or failed for good: a failed initialisation is not retried, whichever status it failed with.
    if (mInitTried) return;
    mInitTried = true;
    mInitStatus = initEncoder(width, height, stride, sliceHeight, colorFormat, quality, rotation);
    if (mInitStatus == OK) mInitStatus = mEncoder->start();
}

status_t QuillHeifWriter::initEncoder(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight,
                                      int32_t colorFormat, int32_t quality, int32_t rotation) {
    ATRACE_NAME("initEncoder");
    mWidth = width;
    mHeight = height;
    mStride = stride;
    mSliceHeight = sliceHeight;
    mColorFormat = colorFormat;
    mQuality = quality;
    mRotation = rotation;
    if (!isSaneGeometry(width, height, stride, sliceHeight)) {
        ALOGE("HeifEncoder Init Failed");
        return BAD_VALUE;
    }
    setThmbSize();
    if (mEncoder == nullptr) {
        mEncoder = new QuillHeifEncoder(width, height, stride, sliceHeight, colorFormat, quality);
        const status_t err = mEncoder->initializeCodec();
        if (err != OK) {
            ALOGE("HeifEncoder Init Failed");
            return err;
        }
    }
    ALOGD("HeifEncoder Init Completed");
    mTileCount = mEncoder->tileCount();
    return OK;
}

void QuillHeifWriter::setCallback(Callback callback) { mCallback = callback; }

FrameBytes QuillHeifWriter::expectedFrame() const {
    if (mInitStatus != OK) return {0, 0};
    return frameBytes(mWidth, mStride, mSliceHeight, mColorFormat);
}

void QuillHeifWriter::onMessageReceived(const sp<AMessage>& msg) {
    ATRACE_NAME("onMessageReceived");
    if (msg->what() != kWhatProcessInputFrameNotify) {
        ALOGE("shouldn't be here");
        return;
    }
    ALOGD("kWhatProcessInputFrameNotify, inputFrames size %zu", mInputFrames.size());
    if (!mInputFrames.empty()) {
        writeHeadFrame();
        takeExif();
        clearTopInputFrameExifData();
        mInputFrames.removeAt(0);
    }
    mFrameInFlight.store(false, std::memory_order_release);
    ALOGD("kWhatProcessInputFrameNotify done");
}

void QuillHeifWriter::writeHeadFrame() {
    mMuxer = MediaMuxer::create(mInputFrames[0].fd, MediaMuxer::OUTPUT_FORMAT_HEIF);
    addYuvBuffer(mInputFrames[0].yuv);
    ALOGD("process Heif file finish");
    // A muxer that never started is kept as it is and the frame never reported as done: the caller times out.
    if (mMuxer != nullptr && mMuxerStarted) finishFile();
}

void QuillHeifWriter::finishFile() {
    const InputFrame& frame = mInputFrames[0];
    mMuxer->stop();
    mMuxer.clear();
    mMuxerStarted = false;
    if (frame.isFileFd == 0) ALOGE("%s: not support memory fd", "onMessageReceived");
    if (mCallback != nullptr) mCallback(0, mEncodedData, mEncodedSize);
    // Read before the flag: once it is set the caller may queue and return.
    const InputFrame finished = frame;
    mEncodeDone.store(true, std::memory_order_release);
    if (finished.isFileFd == 0 && ::close(finished.fd) != 0) ALOGD("close encode file failed!");
}

bool QuillHeifWriter::isFrameInFlight() const { return mFrameInFlight.load(std::memory_order_acquire); }

void QuillHeifWriter::holdUntilDestroyed(std::shared_ptr<void> memory) { mHeldMemory.push_back(std::move(memory)); }

// A frame that timed out is still with the looper. Stopping the codec ends it soon, joining the looper makes sure; only
// then may the encoder go.
void QuillHeifWriter::abandonFrame() {
    if (!isFrameInFlight()) return;
    mEncoder->interrupt();
    mLooper->stop();
    mFrameInFlight.store(false, std::memory_order_release);
}

void QuillHeifWriter::close() {
    if (mEncoder != nullptr) {
        abandonFrame();
        mEncoder->close();
        mEncoder.clear();
    }
    mOutputFormat.clear();
    delete[] mTrackIndices;
    mTrackIndices = nullptr;
}

void QuillHeifWriter::destroy() {
    if (mLooper != nullptr) {
        ALOGI("stop looper");
        mLooper->stop();
        mLooper.clear();
    }
    mHeldMemory.clear();
    if (mEncodedData != nullptr) {
        delete[] mEncodedData;
        mEncodedData = nullptr;
        mEncodedSize = 0;
    }
}

}  // namespace android
