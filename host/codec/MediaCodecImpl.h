#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include <media/MediaCodecInfo.h>
#include <media/stagefright/MediaCodec.h>

#include "BufferQueue.h"
#include "BufferSlots.h"
#include "CodecConfig.h"
#include "EncodePool.h"

namespace android {

/** The states, buffers and threads of a MediaCodec. Thread-safe. Frame callbacks of the input surface share it. */
struct MediaCodec::Impl : public std::enable_shared_from_this<MediaCodec::Impl> {
    enum class State { kUninitialised, kConfigured, kStarted, kStopping, kReleased };
    enum class Port { kInput, kOutput };

    /** A coded buffer, as `dequeueOutputBuffer` describes it. */
    struct Output {
        size_t index = 0;
        size_t size = 0;
        int64_t timeUs = 0;
        uint32_t flags = 0;
    };

    explicit Impl(const sp<MediaCodecInfo>& info) : mInfo(info) {}
    ~Impl() { shutDown(State::kReleased); }

    status_t configure(const sp<AMessage>& format);
    status_t createInputSurface(sp<IGraphicBufferProducer>* producer);
    status_t start();
    /** Leaves every state but kReleased for `target`. */
    status_t shutDown(State target);

    status_t dequeueInput(size_t* index, int64_t timeoutUs);
    /** `swallowed`: takes the picture but never codes it. */
    status_t queueInput(size_t index, size_t offset, size_t size, int64_t timeUs, uint32_t flags, bool swallowed);
    status_t dequeueOutput(Output* output, int64_t timeoutUs);
    status_t releaseOutput(size_t index);

    status_t buffer(Port port, size_t index, sp<MediaCodecBuffer>* buffer) const;
    status_t outputFormat(sp<AMessage>* format) const;
    bool isStarted() const;

    const sp<MediaCodecInfo>& info() const { return mInfo; }

  private:
    using BufferSlots = quill::host::BufferSlots;
    using Guard = std::unique_lock<std::mutex>;

    // All with mLock held.
    bool takesBuffers() const { return mState == State::kStarted && mConfig.layout; }
    BufferSlots& slots(Port port) { return port == Port::kInput ? mInputs : mOutputs; }
    const BufferSlots& slots(Port port) const { return port == Port::kInput ? mInputs : mOutputs; }
    void resetStream();
    sp<MediaCodecBuffer> makeInput() const;
    status_t submitInput(size_t index, size_t offset, size_t size, int64_t timeUs);
    void submitEndOfStream(int64_t timeUs);
    void acquireFrames();
    void submitFrame(const sp<GraphicBuffer>& frame, int64_t timeUs);
    bool hasOutput();
    status_t takeOutput(Output* output);
    status_t announceFormat();
    status_t fillOutput(const std::vector<uint8_t>& bytes, Output* output);

    // Without mLock.
    void onProgress();
    void onFrame();
    void returnInput(size_t index);

    const sp<MediaCodecInfo> mInfo;

    mutable std::mutex mLock;
    std::condition_variable mNews;  // state, free input, output
    State mState = State::kUninitialised;
    quill::host::CodecConfig mConfig;
    sp<AMessage> mInputFormat;
    sp<AMessage> mOutputFormat;
    sp<quill::host::BufferQueue> mSurface;
    BufferSlots mInputs;
    BufferSlots mOutputs;
    std::unique_ptr<quill::host::EncodePool> mPool;

    // Of the stream since `start`.
    std::vector<uint8_t> mParameterSets;
    std::optional<quill::host::CodedPicture> mNextOutput;  // polled, not given out yet
    bool mFailed = false;
    bool mFormatAnnounced = false;
    bool mParameterSetsGiven = false;
};

}  // namespace android
