#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include "QuillHeifWriter.h"

#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include <log/log.h>
#include <utils/ThreadDefs.h>

#include "InputFrame.h"
#include "QuillHeifEncoder.h"

namespace android {

namespace {

constexpr char kLooperName[] = "QuillHeifWriter-ProcessInputFrame";

struct Job {
    std::function<void()> work;
    std::atomic<bool> returned{false};

    void run() {
        work();
        work = nullptr;  // what it holds goes on this thread too
        returned = true;
    }
};

/** Polls until `condition` holds, 2 s at most; what it said last. Most hold within a millisecond. */
bool waitInTime(const std::function<bool()>& condition) {
    constexpr useconds_t kFirstIntervalUs = 200, kPollIntervalUs = 2000;
    constexpr int kFirstPolls = 10, kPolls = 1000;
    for (int i = 0; i < kPolls && !condition(); ++i) usleep(i < kFirstPolls ? kFirstIntervalUs : kPollIntervalUs);
    return condition();
}

/**
 * Calls `work` on a thread of its own and waits for it, 2 s at most. False if it has not returned then: the thread is
 * left behind with all that `work` holds. Where no thread can be had, `work` runs on the caller's, however long that
 * takes.
 */
bool returnsInTime(std::function<void()> work) {
    std::shared_ptr<Job> job;
    try {
        job = std::make_shared<Job>();
        job->work = std::move(work);
        std::thread([job] { job->run(); }).detach();
    } catch (const std::exception&) {
        (job == nullptr ? work : job->work)();
        return true;
    }
    return waitInTime([&] { return job->returned.load(); });
}

}  // namespace

QuillHeifWriter::QuillHeifWriter() { ALOGD("QuillHeifWriter()"); }

// Does not free the in-memory result: `destroy` has done so. On the looper's own thread if that was left behind and
// comes back.
QuillHeifWriter::~QuillHeifWriter() {
    ALOGD("~QuillHeifWriter()");
    mInputFrames.clear();
    mLooper.clear();
    mQueuedFrame.clear();
    mEncoder.clear();
}

void QuillHeifWriter::start(int32_t width, int32_t height, int32_t stride, int32_t sliceHeight, int32_t colorFormat,
                            int32_t quality, int32_t rotation) {
    ATRACE_NAME("start");
    if (isLooperAtWork()) {
        ALOGE("The writer is at work on a frame and is not started again");
        return;
    }
    // A handler belongs to one looper; a second start moves it over to the new one.
    if (mLooper != nullptr) mLooper->unregisterHandler(id());
    mLooper = new ALooper;
    mLooper->setName(kLooperName);
    mLooper->start(false /* runOnCallingThread */, true /* canCallJava */, PRIORITY_AUDIO);
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
    mGeometry = {width, height, stride, sliceHeight};
    mColorFormat = colorFormat;
    mFormat = findFrameFormat(colorFormat);
    mQuality = quality;
    mRotation = rotation;
    if (!mGeometry.isSane()) {
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
    return mInitStatus == OK ? frameBytes(mColorFormat, mGeometry) : FrameBytes{0, 0};
}

bool QuillHeifWriter::isLooperAtWork() const { return mQueuedFrame != nullptr && mQueuedFrame->workLease.isInUse(); }

// On a thread of its own, because a codec that hangs may hold the one that stops it. The looper then comes back by
// itself: its calls on a codec that is stopped fail.
void QuillHeifWriter::close() {
    if (mEncoder != nullptr) {
        const bool closed = returnsInTime([encoder = std::move(mEncoder)] { encoder->close(); });
        if (!closed) ALOGE("The codec does not stop: it is left behind with the thread that waits for it");
    }
    waitInTime([this] { return !isLooperAtWork(); });
}

void QuillHeifWriter::destroy() {
    if (mLooper != nullptr) {
        ALOGI("stop looper");
        // A looper left behind goes with the writer, once its call returns.
        if (isLooperAtWork()) {
            ALOGE("The platform holds the looper: it is left behind");
        } else {
            mLooper->stop();
            mLooper.clear();
        }
    }
    if (mEncodedData != nullptr) {
        delete[] mEncodedData;
        mEncodedData = nullptr;
        mEncodedSize = 0;
    }
}

bool QuillHeifWriter::getEncData(uint8_t** data, uint32_t* size) {
    const bool done = mQueuedFrame != nullptr && mQueuedFrame->encodeDone.load(std::memory_order_acquire);
    if (data == nullptr || size == nullptr || !done) return false;
    ALOGI("Get encoded size %d", static_cast<int>(mEncodedSize));
    *data = new uint8_t[mEncodedSize];
    *size = mEncodedSize;
    if (mEncodedSize > 0) memcpy(*data, mEncodedData, mEncodedSize);
    return true;
}

void QuillHeifWriter::saveBuffer(const void* buf, int32_t len, const char* path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path, "wb"), fclose);
    if (file == nullptr) {
        ALOGE("saveBuffer error");
        return;
    }
    if (len > 0) fwrite(buf, 1, static_cast<size_t>(len), file.get());
}

}  // namespace android
