#define LOG_TAG "QuillPlatform"

#include <media/stagefright/MediaCodec.h>

#include <string.h>

#include <algorithm>

#include <gui/Surface.h>
#include <log/log.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AString.h>
#include <mediadrm/ICrypto.h>

#include "CallLog.h"
#include "CodecsXml.h"
#include "Faults.h"
#include "MediaCodecImpl.h"
#include "MessageText.h"

namespace android {

using quill::host::CallLog;
using quill::host::DeviceCodecs;
using quill::host::Fault;
using quill::host::Faults;

namespace {

std::optional<status_t> faultAt(const char* call) { return Faults::instance().statusAt(call); }

ssize_t findByName(const DeviceCodecs& device, const AString& name) {
    for (size_t i = 0; i < device.codecs.size(); ++i) {
        if (device.codecs[i].name == name.c_str()) return static_cast<ssize_t>(i);
    }
    return NAME_NOT_FOUND;
}

bool isStatus(const std::optional<Fault>& fault) { return fault && fault->kind == Fault::Kind::kStatus; }
bool isNothing(const std::optional<Fault>& fault) { return fault && fault->kind == Fault::Kind::kNothing; }

/** The buffer that a faulty device hands out in place of `buffer`. */
sp<MediaCodecBuffer> spoilt(const sp<MediaCodecBuffer>& buffer, const Fault& fault) {
    sp<ABuffer> memory;
    if (fault.kind == Fault::Kind::kNullBuffer) {
        memory = new ABuffer(nullptr, buffer->capacity());
    } else {
        memory = new ABuffer(buffer->base(), std::min(fault.size, buffer->capacity()));
    }
    return new MediaCodecBuffer(buffer->format(), memory);
}

/** Applies `fault` to a buffer that the codec is about to hand out. */
status_t actOut(const std::optional<Fault>& fault, status_t err, sp<MediaCodecBuffer>* buffer) {
    if (err == OK && fault) *buffer = isNothing(fault) ? nullptr : spoilt(*buffer, *fault);
    return err;
}

sp<MediaCodec> refuse(status_t why, status_t* err) {
    if (err != nullptr) *err = why;
    return nullptr;
}

}  // namespace

sp<MediaCodec> MediaCodec::CreateByType(const sp<ALooper>&, const AString& mime, bool encoder, status_t* err, pid_t,
                                        uid_t) {
    if (const auto fault = faultAt("MediaCodec::CreateByType")) return refuse(*fault, err);
    const DeviceCodecs* const device = quill::host::deviceCodecs();
    if (device == nullptr) return refuse(NAME_NOT_FOUND, err);
    return create(quill::host::findCodecEntry(*device, mime.c_str(), encoder, 0), err);
}

sp<MediaCodec> MediaCodec::CreateByComponentName(const sp<ALooper>&, const AString& name, status_t* err, pid_t, uid_t) {
    if (const auto fault = faultAt("MediaCodec::CreateByComponentName")) return refuse(*fault, err);
    const DeviceCodecs* const device = quill::host::deviceCodecs();
    if (device == nullptr) return refuse(NAME_NOT_FOUND, err);
    return create(findByName(*device, name), err);
}

/** The codec at `listIndex` of the device's list; null if that is a negative status. */
sp<MediaCodec> MediaCodec::create(ssize_t listIndex, status_t* err) {
    if (listIndex < 0) return refuse(static_cast<status_t>(listIndex), err);
    if (err != nullptr) *err = OK;
    const DeviceCodecs& device = *quill::host::deviceCodecs();
    const sp<MediaCodecInfo> info = new MediaCodecInfo(device.codecs[static_cast<size_t>(listIndex)]);
    return new MediaCodec(std::make_shared<Impl>(info));
}

MediaCodec::MediaCodec(std::shared_ptr<Impl> impl) : mImpl(std::move(impl)) {}

// A frame callback may still hold the implementation, so it is shut down here and not by its destructor.
MediaCodec::~MediaCodec() { mImpl->shutDown(Impl::State::kReleased); }

// No message is ever posted here: every call is synchronous.
void MediaCodec::onMessageReceived(const sp<AMessage>&) {}

status_t MediaCodec::configure(const sp<AMessage>& format, const sp<Surface>& nativeWindow, const sp<ICrypto>& crypto,
                               uint32_t flags) {
    if (format != nullptr) CallLog::instance().note("MediaCodec::configure", quill::host::itemsText(*format));
    if (const auto fault = faultAt("MediaCodec::configure")) return *fault;
    if (!mImpl->info()->isEncoder()) return ERROR_UNSUPPORTED;
    if (nativeWindow != nullptr || crypto != nullptr || flags != CONFIGURE_FLAG_ENCODE) return BAD_VALUE;
    return mImpl->configure(format);
}

status_t MediaCodec::createInputSurface(sp<IGraphicBufferProducer>* bufferProducer) {
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::createInputSurface");
    if (isStatus(fault)) return fault->status;
    const status_t err = mImpl->createInputSurface(bufferProducer);
    if (isNothing(fault)) *bufferProducer = nullptr;
    return err;
}

status_t MediaCodec::start() {
    if (const auto fault = faultAt("MediaCodec::start")) return *fault;
    return mImpl->start();
}

status_t MediaCodec::stop() {
    if (const auto fault = faultAt("MediaCodec::stop")) return *fault;
    return mImpl->shutDown(Impl::State::kUninitialised);
}

status_t MediaCodec::release() {
    if (const auto fault = faultAt("MediaCodec::release")) return *fault;
    return mImpl->shutDown(Impl::State::kReleased);
}

status_t MediaCodec::queueInputBuffer(size_t index, size_t offset, size_t size, int64_t presentationTimeUs,
                                      uint32_t flags, AString* errorDetailMsg) {
    CallLog::instance().note("MediaCodec::queueInputBuffer", {static_cast<int64_t>(index), static_cast<int64_t>(offset),
                                                              static_cast<int64_t>(size), presentationTimeUs, flags});
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::queueInputBuffer");
    if (isStatus(fault)) return fault->status;
    const bool swallowed = fault && fault->kind == Fault::Kind::kNoOutput;
    const status_t err = mImpl->queueInput(index, offset, size, presentationTimeUs, flags, swallowed);
    if (err != OK && errorDetailMsg != nullptr) *errorDetailMsg = strerror(-err);
    return err;
}

status_t MediaCodec::dequeueInputBuffer(size_t* index, int64_t timeoutUs) {
    CallLog::instance().note("MediaCodec::dequeueInputBuffer", {timeoutUs});
    if (const auto fault = faultAt("MediaCodec::dequeueInputBuffer")) return *fault;
    return mImpl->dequeueInput(index, timeoutUs);
}

status_t MediaCodec::dequeueOutputBuffer(size_t* index, size_t* offset, size_t* size, int64_t* presentationTimeUs,
                                         uint32_t* flags, int64_t timeoutUs) {
    CallLog::instance().note("MediaCodec::dequeueOutputBuffer", {timeoutUs});
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::dequeueOutputBuffer");
    if (isStatus(fault)) return fault->status;
    if (fault && fault->kind == Fault::Kind::kFormatChange && mImpl->isStarted()) return INFO_FORMAT_CHANGED;
    Impl::Output output;
    const status_t err = mImpl->dequeueOutput(&output, timeoutUs);
    if (err != OK) return err;
    *index = output.index;
    *offset = 0;
    *size = output.size;
    *presentationTimeUs = output.timeUs;
    *flags = fault && fault->kind == Fault::Kind::kFlags ? static_cast<uint32_t>(fault->status) : output.flags;
    return OK;
}

status_t MediaCodec::releaseOutputBuffer(size_t index) {
    if (const auto fault = faultAt("MediaCodec::releaseOutputBuffer")) return *fault;
    return mImpl->releaseOutput(index);
}

status_t MediaCodec::getOutputFormat(sp<AMessage>* format) const {
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::getOutputFormat");
    if (isStatus(fault)) return fault->status;
    const status_t err = mImpl->outputFormat(format);
    if (isNothing(fault)) *format = nullptr;
    return err;
}

status_t MediaCodec::getInputBuffer(size_t index, sp<MediaCodecBuffer>* buffer) {
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::getInputBuffer");
    if (isStatus(fault)) return fault->status;
    return actOut(fault, mImpl->buffer(Impl::Port::kInput, index, buffer), buffer);
}

status_t MediaCodec::getOutputBuffer(size_t index, sp<MediaCodecBuffer>* buffer) {
    const std::optional<Fault> fault = Faults::instance().at("MediaCodec::getOutputBuffer");
    if (isStatus(fault)) return fault->status;
    return actOut(fault, mImpl->buffer(Impl::Port::kOutput, index, buffer), buffer);
}

status_t MediaCodec::getName(AString* componentName) const {
    if (const auto fault = faultAt("MediaCodec::getName")) return *fault;
    *componentName = mImpl->info()->getCodecName();
    return OK;
}

}  // namespace android
