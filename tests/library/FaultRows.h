// Which platform calls are failed how, and what has to come of it: the rows of the fault matrix.
#pragma once

#include <errno.h>
#include <limits.h>

#include <initializer_list>
#include <vector>

#include <utils/Errors.h>

#include "Faults.h"
#include "support/Shot.h"

namespace quill::test {

using namespace android;
using quill::host::Fault;

constexpr int kForEver = INT_MAX;

/** Occurrences of a call; those below 0 count from the last, -1. */
struct Range {
    int first, last;
    bool contains(int occurrence, int calls) const {
        const auto counted = [&](int end) { return end < 0 ? calls + 1 + end : end; };
        return counted(first) <= occurrence && occurrence <= counted(last);
    }
};
using Patiences = std::vector<Patience>;
const Patiences kEnds = {Patience::kUntilDone}, kBlocks = {Patience::kNone}, kGoesOn = {Patience::kAfterwards};
const Patiences kStalls = {Patience::kNone, Patience::kStopFails, Patience::kAfterwards};
const Patiences kForGood = {Patience::kNone, Patience::kStopFails};
constexpr Range kAny{1, -1}, kFirst{1, 1}, kNotFirst{2, -1}, kLast{-1, -1}, kNotLast{1, -2};

/** Outcomes, as `ShotOutcome` tells them, of a still and of a live photo. */
struct Expected {
    const char* still;
    const char* live;
};
constexpr Expected kWhole{"0: still", "0: still mpvd gain qext"};
constexpr Expected kTimedOut{"-1 after 10 s: as it was", "-1 after 10 s: as it was"};
/** The muxer was writing when the time ran out: it completes the still. */
constexpr Expected kTooLate{"-1 after 10 s: still", "-1 after 10 s: still"};
constexpr Expected kRefused{"-1: as it was", "-1: as it was"};
/** What the muxer says at its end is not looked at, on purpose: it is told to stop, and the frame is done. */
constexpr Expected kUnnoticed{"0: as it was", "0: mpvd gain qext"};
constexpr Expected kCut{"", "0: still, then cut"};

struct Row {
    const char* call;
    Range where;
    std::vector<Fault> faults;
    Expected expected;
    const char* line = "";  ///< that the log then has, see `expectedLine`
    Patiences patiences = kEnds;
    const char* scene = "";  ///< what the scene's name begins with
    int count = 1;
};

inline std::vector<Fault> failing(std::initializer_list<int> statuses) {
    std::vector<Fault> faults;
    for (const int status : statuses) faults.push_back(Fault::failing(status));
    return faults;
}

const std::vector<Fault> kAbsent = failing({-1});
const std::vector<Fault> kNoCodec = failing({NAME_NOT_FOUND, NO_MEMORY, DEAD_OBJECT});
const std::vector<Fault> kDead = failing({INVALID_OPERATION, NO_MEMORY, DEAD_OBJECT});
const std::vector<Fault> kRefusedAtStart = failing({BAD_VALUE, INVALID_OPERATION, NO_MEMORY, NO_INIT, UNKNOWN_ERROR});
const std::vector<Fault> kStall = {Fault::stalling()};
const std::vector<Fault> kRefusing = failing({BAD_VALUE, INVALID_OPERATION, DEAD_OBJECT});
const std::vector<Fault> kInterrupted = {Fault::failing(-EINTR), Fault::shortBuffer(1)};
const std::vector<Fault> kNoRoom = failing({-EIO, -ENOSPC});

constexpr char kNoEncoder[] = "E/QuillHeifWriter: HeifEncoder donot init or start Failed";
constexpr char kFailed[] = "D/QuillHeifWriter: Encode Finish: 0";
constexpr char kMuxerWrites[] = "E/QuillHeifWriter: The muxer is still writing and may complete the file";
constexpr char kLeftBehind[] =
        "E/QuillHeifWriter: The codec does not stop: it is left behind with the thread that waits for it";
constexpr char kEncoderFailed[] = "E/QuillHeifWriter: Encoder failed!";
constexpr char kNoMuxer[] = "E/QuillHeifWriter: !!! Muxer start error, please check file access permision";
constexpr char kNoOutput[] = "W/QuillHeifEncoder: Received error %d (%n) instead of output";
constexpr char kNoWindow[] = "E/QuillHeifEncoder: Surface::dequeueBuffer returned error %d";
constexpr char kNoArray[] = "E/NativeHeifWriter: The VM does not hand out an array";
constexpr char kNoDescriptor[] = "E/NativeHeifWriter: File descriptor is not in read-write mode or write-only mode!";

const Row kRows[] = {
        // The codec list, read once a process.
        {"MediaCodecList::getInstance", kAny, kAbsent, kRefused, kNoEncoder},
        {"MediaCodecList::findCodecByType", kNotLast, kNoCodec, kWhole},
        {"MediaCodecList::findCodecByType", kLast, kNoCodec, kRefused, kNoEncoder},
        {"MediaCodecList::getCodecInfo", kNotLast, kAbsent, kWhole,
         "E/HeicEncoderInfoManager: getCodecDetails: Failed to get codec info for image/vnd.android.heic"},
        {"MediaCodecList::getCodecInfo", kLast, kAbsent, kRefused,
         "E/HeicEncoderInfoManager: getHevcCodecDetails: Failed to get codec info for video/hevc"},
        {"MediaCodecInfo::getCapabilitiesFor", kNotLast, kAbsent, kWhole,
         "E/HeicEncoderInfoManager: getCodecDetails: Failed to get capabilities for codec image/vnd.android.heic"},
        {"MediaCodecInfo::getCapabilitiesFor", kLast, kAbsent, kRefused,
         "E/HeicEncoderInfoManager: getHevcCodecDetails: [%c] Failed to get capabilities"},
        {"MediaCodecInfo::Capabilities::getDetails", kNotLast, kAbsent, kWhole,
         "E/HeicEncoderInfoManager: getCodecDetails: Failed to get details for codec image/vnd.android.heic"},
        {"MediaCodecInfo::Capabilities::getDetails", kLast, kAbsent, kRefused,
         "E/HeicEncoderInfoManager: getHevcCodecDetails: [%c] Failed to get details"},
        // The codec.
        {"MediaCodec::CreateByComponentName", kAny, kNoCodec, kRefused,
         "E/QuillHeifEncoder: createCodec: Failed to create codec for image/vnd.android.heic"},
        {"MediaCodec::CreateByType", kAny, kNoCodec, kRefused,
         "E/QuillHeifEncoder: createCodec: Failed to create codec for image/vnd.android.heic"},
        {"MediaCodec::getName", kAny, kDead, kWhole},
        {"MediaCodec::configure", kAny, kRefusedAtStart, kRefused,
         "E/QuillHeifEncoder: Failed to configure codec: %s (%d)"},
        {"MediaCodec::createInputSurface", kAny, kDead, kRefused, kNoEncoder},
        {"MediaCodec::createInputSurface", kAny, {Fault::nothing()}, kTimedOut, kEncoderFailed},
        {"MediaCodec::start", kAny, kRefusedAtStart, kRefused, "E/QuillHeifEncoder: Failed to start codec: %s (%d)"},
        {"MediaCodec::dequeueInputBuffer", kAny, failing({WOULD_BLOCK, INVALID_OPERATION, DEAD_OBJECT}), kWhole},
        {"MediaCodec::dequeueInputBuffer", kFirst, failing({DEAD_OBJECT}), kTimedOut, kEncoderFailed, kBlocks, "",
         kForEver},
        {"MediaCodec::getInputBuffer", kAny, kDead, kTimedOut, kEncoderFailed},
        {"MediaCodec::getInputBuffer",
         kAny,
         {Fault::nothing(), Fault::nullBuffer()},
         kTimedOut,
         "E/QuillHeifEncoder: dstBuf is nullptr"},
        {"MediaCodec::getInputBuffer",
         kAny,
         {Fault::shortBuffer(1000)},
         kTimedOut,
         "E/QuillHeifEncoder: buffer size (786432) too large for codec input size (1000)"},
        {"MediaCodec::queueInputBuffer", kNotLast, kDead, kTimedOut, kEncoderFailed, kBlocks},
        {"MediaCodec::queueInputBuffer", kLast, kDead, kTimedOut, "E/QuillHeifEncoder: encode heif (err %d(%n))"},
        {"MediaCodec::queueInputBuffer", kAny, {Fault::noOutput()}, kTimedOut, kEncoderFailed, kBlocks},
        {"MediaCodec::dequeueOutputBuffer", kAny, failing({WOULD_BLOCK, -1014}), kWhole},
        {"MediaCodec::dequeueOutputBuffer", kAny, {Fault::formatChange()}, kWhole},
        {"MediaCodec::dequeueOutputBuffer", kAny, kDead, kTimedOut, kNoOutput},
        {"MediaCodec::dequeueOutputBuffer", kAny, failing({-1010, -1014, WOULD_BLOCK}), kTimedOut, kNoOutput, kEnds, "",
         kForEver},
        {"MediaCodec::dequeueOutputBuffer",
         kAny,
         {Fault::formatChange()},
         kTimedOut,
         kEncoderFailed,
         kEnds,
         "",
         kForEver},
        {"MediaCodec::dequeueOutputBuffer",
         kFirst,
         {Fault::flags(2), Fault::flags(5)},
         kTimedOut,
         kEncoderFailed,
         kBlocks,
         "",
         kForEver},
        {"MediaCodec::getOutputFormat", kAny, kDead, kTimedOut, "E/QuillHeifEncoder: encode heif (err %d(%n))"},
        {"MediaCodec::getOutputFormat",
         kAny,
         {Fault::nothing()},
         kTimedOut,
         "E/QuillHeifEncoder: encode heif (err 0(NO_ERROR))"},
        {"MediaCodec::getOutputBuffer", kAny, kDead, kTimedOut, kEncoderFailed},
        {"MediaCodec::getOutputBuffer", kAny, {Fault::nothing()}, kTimedOut, kEncoderFailed},
        {"MediaCodec::getOutputBuffer", kFirst, {Fault::nullBuffer(), Fault::shortBuffer(0)}, kWhole},
        {"MediaCodec::getOutputBuffer",
         kNotFirst,
         {Fault::nullBuffer()},
         kTimedOut,
         "E/QuillHeifEncoder: encode heif (err -12(NO_MEMORY))"},
        {"MediaCodec::getOutputBuffer", kNotFirst, {Fault::shortBuffer(0), Fault::shortBuffer(3)}, kUnnoticed},
        {"MediaCodec::releaseOutputBuffer", kAny, kDead, kWhole},
        {"MediaCodec::stop", kAny, kDead, kWhole},
        {"MediaCodec::release", kAny, kDead, kWhole},
        // The input surface.
        {"ANativeWindow_setBuffersGeometry", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: surface buffer of 1 x 1 is too small for a tile"},
        {"native_window_set_usage", kAny, failing({NO_INIT}), kTimedOut,
         "E/QuillHeifEncoder: native_window_set_usage failed: No such device (19)"},
        {"Surface::setMaxDequeuedBufferCount", kAny, kRefusing, kWhole},
        {"native_window_api_connect", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: Failed to connect from surface, err %d"},
        {"native_window_api_disconnect", kAny, kRefusing, kWhole,
         "E/QuillHeifEncoder: Failed to disconnect from surface, err %d"},
        {"ANativeWindow::dequeueBuffer", kAny, failing({NO_INIT, NO_MEMORY, DEAD_OBJECT, TIMED_OUT}), kTimedOut,
         kNoWindow},
        {"ANativeWindow::dequeueBuffer",
         kAny,
         {Fault::nothing()},
         kTimedOut,
         "E/QuillHeifEncoder: Surface::dequeueBuffer returned error -12"},
        {"ANativeWindow::dequeueBuffer",
         kAny,
         {Fault::shortBuffer(256)},
         kTimedOut,
         "E/QuillHeifEncoder: surface buffer of 256 x 512 is too small for a tile"},
        {"ANativeWindow::cancelBuffer", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: surface buffer of 256 x 512 is too small for a tile"},
        {"ANativeWindow::queueBuffer", kAny, kRefusing, kTimedOut, kEncoderFailed, kBlocks},
        {"GraphicBuffer::lock", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: surface buffer cannot be locked: %s (%d)"},
        {"GraphicBuffer::lock",
         kAny,
         {Fault::nullBuffer()},
         kTimedOut,
         "E/QuillHeifEncoder: surface buffer cannot be locked: Cannot allocate memory (-12)"},
        {"GraphicBuffer::unlock", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: surface buffer cannot be unlocked: %s (%d)"},
        // What may hold the looper: for good, for good while the codec refuses to stop, and until after the time-out.
        {"MediaCodec::dequeueInputBuffer", kFirst, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::getInputBuffer", kLast, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::queueInputBuffer", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::dequeueOutputBuffer", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::getOutputFormat", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::getOutputBuffer", kLast, kStall, kTimedOut, kFailed, kStalls},
        {"MediaCodec::releaseOutputBuffer", kLast, kStall, kTimedOut, kFailed, kStalls},
        {"ANativeWindow::dequeueBuffer", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"ANativeWindow::queueBuffer", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"GraphicBuffer::lock", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"GraphicBuffer::unlock", kLast, kStall, kTimedOut, kFailed, kStalls},
        {"native_window_api_disconnect", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaMuxer::create", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaMuxer::setOrientationHint", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaMuxer::addTrack", kAny, kStall, kTimedOut, kFailed, kStalls},
        {"MediaMuxer::start", kAny, kStall, kTimedOut, kMuxerWrites, kForGood},
        {"MediaMuxer::start", kAny, kStall, kTooLate, kMuxerWrites, kGoesOn},
        {"MediaMuxer::writeSampleData", kAny, kStall, kTimedOut, kMuxerWrites, kForGood},
        {"MediaMuxer::writeSampleData", kAny, kStall, kTooLate, kMuxerWrites, kGoesOn},
        {"MediaMuxer::stop", kAny, kStall, kTimedOut, kMuxerWrites, kForGood},
        {"MediaMuxer::stop", kAny, kStall, kTooLate, kMuxerWrites, kGoesOn},
        // What may hold the thread that destroys a writer.
        {"MediaCodec::stop", kAny, kStall, kWhole, kLeftBehind, kBlocks},
        {"MediaCodec::release", kAny, kStall, kWhole, kLeftBehind, kBlocks},
        {"ALooper::stop", kFirst, kStall, kWhole, kLeftBehind, kBlocks},
        // Buffers, messages and loopers.
        {"ABuffer::ABuffer", kAny, failing({NO_MEMORY}), kTimedOut, kEncoderFailed},
        {"ALooper::start", kFirst, kDead, kTimedOut, "", kBlocks},
        {"ALooper::start", kLast, kDead, kRefused,
         "E/QuillHeifEncoder: createCodec: Failed to start codec looper: %s (%d)"},
        {"ALooper::stop", kAny, failing({INVALID_OPERATION}), kWhole},
        {"ALooper::registerHandler", kAny, kDead, kTimedOut, "", kBlocks},
        {"AMessage::post", kAny, failing({-ENOENT, NO_MEMORY}), kTimedOut, "", kBlocks},
        // The muxer.
        {"MediaMuxer::create", kAny, kAbsent, kTimedOut},
        {"MediaMuxer::setOrientationHint", kAny, kRefusing, kWhole},
        {"MediaMuxer::addTrack", kAny, kRefusing, kTimedOut, kNoMuxer},
        {"MediaMuxer::start", kAny, kRefusing, kTimedOut, kNoMuxer},
        {"MediaMuxer::writeSampleData", kFirst, kRefusing, kWhole},
        {"MediaMuxer::writeSampleData", kNotFirst, kRefusing, kUnnoticed},
        {"MediaMuxer::stop", kAny, failing({INVALID_OPERATION, -1004, NO_MEMORY}), kUnnoticed},
        // The system.
        {"property_get", kAny, kAbsent, kWhole},
        {"usleep", kAny, failing({-EINTR}), kWhole},
        {"AFileDescriptor_getFd", kFirst, kAbsent, {"", "0: still mpvd qext"}, "", kEnds, "buffers, live"},
        {"AFileDescriptor_getFd", kFirst, kAbsent, {"", "0: still mpvd qext"}, "", kEnds, "surface, live"},
        {"AFileDescriptor_getFd", kNotFirst, kAbsent, kRefused, kNoDescriptor, kEnds, "buffers, live"},
        {"AFileDescriptor_getFd", kNotFirst, kAbsent, kRefused, "", kEnds, "surface, live"},
        {"AFileDescriptor_getFd", kAny, kAbsent, kRefused, kNoDescriptor, kEnds, "buffers, still"},
        {"AFileDescriptor_getFd", kAny, kAbsent, kRefused, kNoDescriptor, kEnds, "surface, still"},
        {"AndroidBitmap_getInfo", kAny, failing({-1, -2, -3}), kWhole},
        {"AndroidBitmap_lockPixels", kAny, failing({-1, -2, -3}), kRefused,
         "E/NativeHeifWriter: Input parameter is invalid!"},
        {"AndroidBitmap_unlockPixels", kAny, {Fault::late(1000)}, kWhole},
        {"fcntl", kFirst, failing({-EBADF}), kRefused},
        {"fcntl", kLast, failing({-EMFILE}), kRefused,
         "E/QuillHeifWriter: File descriptor cannot be duplicated: Too many open files"},
        // The VM: a status stands for an exception that it leaves pending.
        {"GetByteArrayElements", kAny, {Fault::failing(-1), Fault::nothing()}, kRefused, kNoArray},
        {"GetStringUTFChars",
         kAny,
         {Fault::failing(-1), Fault::nothing()},
         {"", "-1: as it was"},
         "E/NativeHeifWriter: The VM does not hand out the XMP text"},
        {"lseek", kFirst, failing({-ESPIPE, -EBADF}), {"", "-1: still"}, "E/QuillHeifWriter: lseek failure"},
        {"lseek", {3, 3}, failing({-ESPIPE, -EBADF}), {"", "-1: still mpvd"}, "E/QuillHeifWriter: lseek failure"},
        {"lseek", {2, 2}, failing({-ESPIPE}), kCut},
        {"lseek", {4, 4}, failing({-ESPIPE}), {"", "0: still mpvd, then cut"}},
        {"read", kAny, kInterrupted, kWhole},
        {"read", kFirst, failing({-EIO}), kCut},
        {"write", kAny, kInterrupted, kWhole},
        {"write", kFirst, kNoRoom, kCut},
        {"write",
         kLast,
         kNoRoom,
         {"", "-1: still mpvd gain, then cut"},
         "E/QuillHeifWriter: Failed to write fileExtender to file"},
};

}  // namespace quill::test
