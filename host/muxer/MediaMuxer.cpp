#define LOG_TAG "MediaMuxer"

#include <media/stagefright/MediaMuxer.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <log/log.h>
#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaErrors.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

#include "CallLog.h"
#include "Faults.h"
#include "FileSink.h"
#include "HeifFile.h"
#include "HeifItems.h"
#include "HeifTrack.h"
#include "MessageText.h"
#include "MetadataSample.h"

namespace android {

namespace {

using namespace quill::host;

constexpr int kQuarterTurn = 90, kFullTurn = 360;

enum class Phase { kInitialized, kStarted, kStopped };

status_t refuse(status_t status, const char* call, const char* why) {
    ALOGE("%s: %s", call, why);
    return status;
}

MediaMuxer* refuseCreation(const char* why) {
    refuse(BAD_VALUE, "create", why);
    return nullptr;
}

/** A buffer without memory counts as empty. */
ByteView viewOf(const sp<ABuffer>& buffer) {
    if (!buffer->base()) return {};
    return {buffer->data(), buffer->size()};
}

Bytes copyOf(ByteView view) { return Bytes(view.data, view.data + view.size); }

}  // namespace

/** The state of a muxer. Its functions are called with `lock` held. */
struct MediaMuxer::State {
    std::mutex lock;
    Phase phase = Phase::kInitialized;
    int clockwiseDegrees = 0;
    std::unique_ptr<FileSink> sink;
    std::vector<sp<AMessage>> formats;
    std::vector<HeifTrack> tracks;  // beside `formats`
    std::vector<Bytes> metadata;

    size_t itemCount() const {
        size_t count = metadata.size();
        for (const HeifTrack& track : tracks) count += track.itemCount();
        return count;
    }

    status_t addMetadata(ByteView sample);
    status_t addTile(ByteView sample, HeifTrack* track);
    status_t writeFile();
    bool writeLayout(const HeifLayout& layout, uint64_t start);
};

status_t MediaMuxer::State::addMetadata(ByteView sample) {
    if (sample.size == 0) return OK;
    if (classifyMetadata(sample).type == MetadataKind::Type::kUnknown) {
        ALOGW("writeSampleData: dropped %zu bytes that are neither EXIF nor XMP", sample.size);
        return OK;
    }
    if (itemCount() >= kMaxHeifItems) return refuse(BAD_VALUE, "writeSampleData", "too many items for one file");
    metadata.push_back(copyOf(sample));
    return OK;
}

status_t MediaMuxer::State::addTile(ByteView sample, HeifTrack* track) {
    if (track->samples.size() >= track->tileCount()) {
        return refuse(BAD_VALUE, "writeSampleData", "more samples than the image has tiles");
    }
    auto converted = toLengthPrefixed(sample, track->config);
    if (!converted)
        return refuse(BAD_VALUE, "writeSampleData", "the sample is not a picture that decodes with csd-0 alone");
    track->samples.push_back(std::move(*converted));
    return OK;
}

status_t MediaMuxer::State::writeFile() {
    for (const HeifTrack& track : tracks) {
        if (track.samples.size() == track.tileCount()) continue;
        ALOGE("stop: %zu of %zu tiles missing, nothing is written", track.tileCount() - track.samples.size(),
              track.tileCount());
        return ERROR_MALFORMED;
    }
    uint64_t start = 0;
    if (!sink->begin(&start)) return refuse(ERROR_IO, "stop", sink->error().c_str());
    const HeifContents contents = buildHeifContents(tracks, metadata, clockwiseDegrees);
    const auto layout = layOutHeif(contents, start);
    if (!layout) return refuse(ERROR_MALFORMED, "stop", "the image is too large for the file format");
    if (writeLayout(*layout, start)) return OK;
    sink->rollBack();
    return refuse(ERROR_IO, "stop", sink->error().c_str());
}

bool MediaMuxer::State::writeLayout(const HeifLayout& layout, uint64_t start) {
    if (!sink->append(layout.head)) return false;
    for (ByteView body : layout.bodies) {
        if (!sink->append(body)) return false;
    }
    return sink->finish(start + layout.size);
}

MediaMuxer* MediaMuxer::create(int fd, OutputFormat format) {
    if (Faults::instance().statusAt("MediaMuxer::create")) return nullptr;
    if (format != OUTPUT_FORMAT_HEIF) return refuseCreation("only HEIF is supported");
    std::string problem;
    auto sink = FileSink::open(fd, &problem);
    if (!sink) return refuseCreation(problem.c_str());
    auto state = std::make_unique<State>();
    state->sink = std::move(sink);
    return new MediaMuxer(std::move(state));
}

MediaMuxer::MediaMuxer(std::unique_ptr<State> state) : mState(std::move(state)) {}

MediaMuxer::~MediaMuxer() = default;

ssize_t MediaMuxer::addTrack(const sp<AMessage>& format) {
    if (format != nullptr) CallLog::instance().note("MediaMuxer::addTrack", itemsText(*format));
    if (const auto fault = Faults::instance().statusAt("MediaMuxer::addTrack")) return *fault;
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->phase != Phase::kInitialized) return refuse(INVALID_OPERATION, "addTrack", "only before start");
    std::string problem;
    auto track = makeHeifTrack(format, &problem);
    if (!track) return refuse(BAD_VALUE, "addTrack", problem.c_str());
    if (mState->itemCount() + track->itemCount() > kMaxHeifItems) {
        return refuse(BAD_VALUE, "addTrack", "too many tiles for one file");
    }
    mState->tracks.push_back(std::move(*track));
    mState->formats.push_back(format->dup());
    return static_cast<ssize_t>(mState->tracks.size() - 1);
}

status_t MediaMuxer::setOrientationHint(int degrees) {
    CallLog::instance().note("MediaMuxer::setOrientationHint", {degrees});
    if (const auto fault = Faults::instance().statusAt("MediaMuxer::setOrientationHint")) return *fault;
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->phase != Phase::kInitialized) {
        return refuse(INVALID_OPERATION, "setOrientationHint", "only before start");
    }
    if (degrees < 0 || degrees >= kFullTurn || degrees % kQuarterTurn != 0) {
        return refuse(BAD_VALUE, "setOrientationHint", "not 0, 90, 180 or 270 degrees");
    }
    mState->clockwiseDegrees = degrees;
    return OK;
}

status_t MediaMuxer::start() {
    if (const auto fault = Faults::instance().statusAt("MediaMuxer::start")) return *fault;
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->phase != Phase::kInitialized) return refuse(INVALID_OPERATION, "start", "already started");
    if (mState->tracks.empty()) return refuse(INVALID_OPERATION, "start", "no track was added");
    mState->phase = Phase::kStarted;
    return OK;
}

status_t MediaMuxer::writeSampleData(const sp<ABuffer>& buffer, size_t trackIndex, int64_t timeUs, uint32_t flags) {
    CallLog::instance().note("MediaMuxer::writeSampleData",
                             {static_cast<int64_t>(buffer == nullptr ? 0 : buffer->size()),
                              static_cast<int64_t>(trackIndex), timeUs, flags});
    if (const auto fault = Faults::instance().statusAt("MediaMuxer::writeSampleData")) return *fault;
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->phase != Phase::kStarted) return refuse(INVALID_OPERATION, "writeSampleData", "not started");
    if (buffer == nullptr) return refuse(BAD_VALUE, "writeSampleData", "no buffer");
    if (trackIndex >= mState->tracks.size()) return refuse(BAD_VALUE, "writeSampleData", "no such track");
    if (flags & BUFFER_FLAG_MUXER_DATA) return mState->addMetadata(viewOf(buffer));
    if (flags & BUFFER_FLAG_CODEC_CONFIG) return OK;  // the track's csd-0 has it already
    if (!(flags & BUFFER_FLAG_SYNC_FRAME)) return refuse(BAD_VALUE, "writeSampleData", "not a sync frame");
    return mState->addTile(viewOf(buffer), &mState->tracks[trackIndex]);
}

status_t MediaMuxer::stop() {
    if (const auto fault = Faults::instance().statusAt("MediaMuxer::stop")) return *fault;
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->phase != Phase::kStarted) return refuse(INVALID_OPERATION, "stop", "not started, or stopped already");
    const status_t status = mState->writeFile();
    mState->phase = Phase::kStopped;
    mState->sink.reset();
    mState->tracks.clear();
    mState->metadata.clear();
    return status;
}

ssize_t MediaMuxer::getTrackCount() {
    std::lock_guard<std::mutex> guard(mState->lock);
    return mState->phase == Phase::kStopped ? -1 : static_cast<ssize_t>(mState->formats.size());
}

sp<AMessage> MediaMuxer::getTrackFormat(size_t index) {
    std::lock_guard<std::mutex> guard(mState->lock);
    return index < mState->formats.size() ? mState->formats[index]->dup() : nullptr;
}

}  // namespace android
