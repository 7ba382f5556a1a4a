#define LOG_TAG "QuillPlatform"

#include "MediaCodecImpl.h"

#include <algorithm>
#include <thread>

#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>

#include "Clock.h"
#include "Faults.h"
#include "SurfaceFrame.h"

namespace android {

using quill::host::Clock;
using quill::host::CodedPicture;
using quill::host::EncodeJob;
using quill::host::EncodePool;
using quill::host::SourcePicture;

namespace {

using Owner = quill::host::BufferSlots::Owner;

constexpr size_t kMinInputs = 4;
constexpr size_t kMaxInputs = 8;
constexpr size_t kOutputs = 8;
constexpr int kSurfaceBuffers = 8;

constexpr char kCodecSpecificData[] = "csd-0";

/** Enough that no core waits for the next picture. */
size_t inputCount() {
    return std::clamp(static_cast<size_t>(std::thread::hardware_concurrency()) + 2, kMinInputs, kMaxInputs);
}

/** Lets stalled calls on a codec go on when it is shut down. */
void releaseStalledCalls() {
    for (const char* const prefix : {"MediaCodec::", "ANativeWindow"})
        quill::host::Faults::instance().releaseNow(prefix);
}

}  // namespace

status_t MediaCodec::Impl::configure(const sp<AMessage>& format) {
    const Guard guard(mLock);
    if (mState != State::kUninitialised) return INVALID_OPERATION;
    const status_t err = quill::host::parseCodecConfig(format, &mConfig);
    if (err != OK) return err;
    mInputFormat = format->dup();
    mOutputFormat = quill::host::outputFormatOf(format);
    mState = State::kConfigured;
    return OK;
}

status_t MediaCodec::Impl::createInputSurface(sp<IGraphicBufferProducer>* producer) {
    const Guard guard(mLock);
    if (mState != State::kConfigured || mConfig.layout || mSurface != nullptr) return INVALID_OPERATION;
    mSurface = new quill::host::BufferQueue(kSurfaceBuffers);
    mSurface->setFrameListener([weak = weak_from_this()] {
        if (const std::shared_ptr<Impl> self = weak.lock()) self->onFrame();
    });
    *producer = mSurface;
    return OK;
}

status_t MediaCodec::Impl::start() {
    const Guard guard(mLock);
    if (mState != State::kConfigured || (!mConfig.layout && mSurface == nullptr)) return INVALID_OPERATION;
    mFormatAnnounced = false;
    mParameterSetsGiven = false;
    mState = State::kStarted;
    resetStream();
    return OK;
}

/** Empty buffers and an idle pool; then takes the frames that wait on the surface. */
void MediaCodec::Impl::resetStream() {
    mInputs.reset(mConfig.layout ? inputCount() : 0);
    mOutputs.reset(kOutputs);
    mNextOutput.reset();
    mFailed = false;
    mPool = std::make_unique<EncodePool>(mConfig, [this] { onProgress(); });
    if (mSurface != nullptr) acquireFrames();
}

status_t MediaCodec::Impl::shutDown(State target) {
    std::unique_ptr<EncodePool> pool;
    sp<quill::host::BufferQueue> surface;
    {
        Guard guard(mLock);
        mNews.wait(guard, [this] { return mState != State::kStopping; });  // a stop on another thread
        if (mState == State::kReleased) return target == State::kReleased ? OK : INVALID_OPERATION;
        mState = State::kStopping;
        pool.swap(mPool);
        std::swap(surface, mSurface);
    }
    mNews.notify_all();
    if (surface != nullptr) surface->abandon();
    releaseStalledCalls();
    pool.reset();  // without the lock, which its workers take

    {
        const Guard guard(mLock);
        mInputs.reset(0);
        mOutputs.reset(0);
        mNextOutput.reset();
        mState = target;
    }
    mNews.notify_all();
    return OK;
}

status_t MediaCodec::Impl::dequeueInput(size_t* index, int64_t timeoutUs) {
    Guard guard(mLock);
    const bool ready =
            Clock::instance().waitFor(mNews, guard, timeoutUs, [this] { return !takesBuffers() || mInputs.anyFree(); });
    if (!takesBuffers()) return INVALID_OPERATION;
    if (!ready) return WOULD_BLOCK;
    *index = *mInputs.anyFree();
    if (mInputs.buffer(*index) == nullptr) mInputs.setBuffer(*index, makeInput());
    mInputs.give(*index, Owner::kClient);
    return OK;
}

sp<MediaCodecBuffer> MediaCodec::Impl::makeInput() const {
    const size_t bytes = quill::host::bufferBytes(*mConfig.layout, mConfig.stride(), mConfig.sliceHeight());
    return new MediaCodecBuffer(mInputFormat, new ABuffer(bytes));
}

status_t MediaCodec::Impl::queueInput(size_t index, size_t offset, size_t size, int64_t timeUs, uint32_t flags,
                                      bool swallowed) {
    const Guard guard(mLock);
    if (!takesBuffers()) return INVALID_OPERATION;
    const status_t held = mInputs.checkClientHolds(index);
    if (held != OK) return held;
    if (size == 0 || swallowed) {
        mInputs.give(index, Owner::kFree);
        mNews.notify_all();
    } else {
        const status_t err = submitInput(index, offset, size, timeUs);
        if (err != OK) return err;
    }
    if ((flags & BUFFER_FLAG_EOS) != 0) submitEndOfStream(timeUs);
    return OK;
}

status_t MediaCodec::Impl::submitInput(size_t index, size_t offset, size_t size, int64_t timeUs) {
    const sp<MediaCodecBuffer> buffer = mInputs.buffer(index);
    const size_t capacity = buffer->capacity();
    const SourcePicture picture = mConfig.describe(buffer->base() + std::min(offset, capacity));
    const size_t needed = quill::host::bytesRead(picture);
    if (offset > capacity || size > capacity - offset || size < needed) {
        ALOGE("An input picture takes %zu bytes, not %zu at offset %zu of %zu", needed, size, offset, capacity);
        return BAD_VALUE;
    }
    mInputs.give(index, Owner::kCodec);
    EncodeJob job;
    job.picture = picture;
    job.release = [this, index] { returnInput(index); };
    job.timeUs = timeUs;
    mPool->submit(std::move(job));
    return OK;
}

void MediaCodec::Impl::submitEndOfStream(int64_t timeUs) {
    EncodeJob end;
    end.timeUs = timeUs;
    mPool->submit(std::move(end));
    mNews.notify_all();
}

/** On a worker's thread: the picture has been read, so its memory is free for the next one. */
void MediaCodec::Impl::returnInput(size_t index) {
    {
        const Guard guard(mLock);
        if (mState == State::kStarted) mInputs.give(index, Owner::kFree);
    }
    mNews.notify_all();
}

/** On the producer's thread. */
void MediaCodec::Impl::onFrame() {
    const Guard guard(mLock);
    if (mState == State::kStarted && mSurface != nullptr) acquireFrames();
}

void MediaCodec::Impl::acquireFrames() {
    int64_t timeUs = 0;
    while (const sp<GraphicBuffer> buffer = mSurface->acquire(&timeUs)) submitFrame(buffer, timeUs);
}

void MediaCodec::Impl::submitFrame(const sp<GraphicBuffer>& frame, int64_t timeUs) {
    const sp<quill::host::BufferQueue> surface = mSurface;
    const std::optional<SourcePicture> picture = quill::host::pictureIn(*frame, mConfig.width, mConfig.height);
    if (!picture) {
        surface->release(frame);
        return;
    }
    EncodeJob job;
    job.picture = picture;
    job.release = [surface, frame] { surface->release(frame); };
    job.timeUs = timeUs;
    mPool->submit(std::move(job));
}

/** Wakes the waiters. Taking the lock first keeps a waiter that is about to wait from missing it. */
void MediaCodec::Impl::onProgress() {
    { const Guard guard(mLock); }
    mNews.notify_all();
}

status_t MediaCodec::Impl::dequeueOutput(Output* output, int64_t timeoutUs) {
    Guard guard(mLock);
    const bool ready = Clock::instance().waitFor(mNews, guard, timeoutUs,
                                                 [this] { return mState != State::kStarted || hasOutput(); });
    if (mState != State::kStarted) return INVALID_OPERATION;
    if (!ready) return WOULD_BLOCK;
    return mFailed ? UNKNOWN_ERROR : takeOutput(output);
}

/** True if `takeOutput` has output, and a free buffer if the output needs one. */
bool MediaCodec::Impl::hasOutput() {
    if (!mNextOutput && !mFailed) {
        CodedPicture picture;
        const EncodePool::Poll polled = mPool->poll(&picture);
        if (polled == EncodePool::Poll::kPicture) mNextOutput = std::move(picture);
        mFailed = polled == EncodePool::Poll::kFailed;
    }
    if (mFailed) return true;
    if (!mNextOutput) return false;
    const bool onlyAnnounces = !mFormatAnnounced && !mNextOutput->endOfStream;
    return onlyAnnounces || mOutputs.anyFree();
}

status_t MediaCodec::Impl::takeOutput(Output* output) {
    if (mNextOutput->endOfStream) {
        output->flags = BUFFER_FLAG_EOS;
    } else if (!mFormatAnnounced) {
        return announceFormat();
    } else if (!mParameterSetsGiven) {
        output->flags = BUFFER_FLAG_CODECCONFIG;
        const status_t err = fillOutput(mParameterSets, output);
        mParameterSetsGiven = err == OK;
        return err;
    } else {
        output->flags = BUFFER_FLAG_SYNCFRAME;
    }
    output->timeUs = mNextOutput->timeUs;
    const status_t err = fillOutput(mNextOutput->bytes, output);
    if (err == OK) mNextOutput.reset();
    return err;
}

/** Called once a picture is coded: before that, the parameter sets are not known. */
status_t MediaCodec::Impl::announceFormat() {
    mParameterSets = mPool->parameterSets();
    const sp<ABuffer> copy = ABuffer::CreateAsCopy(mParameterSets.data(), mParameterSets.size());
    if (copy == nullptr) return NO_MEMORY;
    mFormatAnnounced = true;
    mOutputFormat = mOutputFormat->dup();
    mOutputFormat->setBuffer(kCodecSpecificData, copy);
    return INFO_FORMAT_CHANGED;
}

status_t MediaCodec::Impl::fillOutput(const std::vector<uint8_t>& bytes, Output* output) {
    const sp<ABuffer> copy = ABuffer::CreateAsCopy(bytes.data(), bytes.size());
    if (copy == nullptr) return NO_MEMORY;
    output->index = *mOutputs.anyFree();
    output->size = bytes.size();
    mOutputs.give(output->index, Owner::kClient);
    mOutputs.setBuffer(output->index, new MediaCodecBuffer(mOutputFormat, copy));
    return OK;
}

status_t MediaCodec::Impl::releaseOutput(size_t index) {
    const Guard guard(mLock);
    if (mState != State::kStarted) return INVALID_OPERATION;
    const status_t held = mOutputs.checkClientHolds(index);
    if (held != OK) return held;
    mOutputs.give(index, Owner::kFree);
    mOutputs.setBuffer(index, nullptr);
    mNews.notify_all();
    return OK;
}

status_t MediaCodec::Impl::buffer(Port port, size_t index, sp<MediaCodecBuffer>* buffer) const {
    const Guard guard(mLock);
    if (mState != State::kStarted || !slots(port).clientHolds(index)) return INVALID_OPERATION;
    *buffer = slots(port).buffer(index);
    return OK;
}

status_t MediaCodec::Impl::outputFormat(sp<AMessage>* format) const {
    const Guard guard(mLock);
    if (mState != State::kConfigured && mState != State::kStarted) return INVALID_OPERATION;
    *format = mOutputFormat->dup();
    return OK;
}

bool MediaCodec::Impl::isStarted() const {
    const Guard guard(mLock);
    return mState == State::kStarted;
}

}  // namespace android
