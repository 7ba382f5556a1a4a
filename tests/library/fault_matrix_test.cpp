// Every platform call that the library makes, failed at its first, middle and last occurrence with each status that
// means something there: what the app gets, what is in its file, what the log says, and that nothing leaks.
#include <gmock/gmock.h>
#include <limits.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <set>

#include "StatusNames.h"
#include "support/ChildProcess.h"
#include "support/GeneratedDocs.h"
#include "support/Shot.h"
#include "support/TestDevice.h"
#include "testing/Clock.h"
#include "testing/Faults.h"

// There when a sanitizer looks for leaks.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Fault;
using quill::host::Faults;

constexpr int kForEver = INT_MAX;

/** A scene, and for what is only done about a failure that failure too. */
struct Road {
    Scene scene;
    std::string failing = "";
    Fault fault = {};
};

const Road kCameraRoads[] = {
        {{"buffers, still", "heic-encoder", FORMAT_P010, false, false}},
        {{"buffers, live", "heic-encoder", FORMAT_P010, true, false}},
        {{"surface, still", "vendor-qti", FORMAT_P010, false, false}},
        {{"surface, live", "vendor-qti", FORMAT_RGBA8888, true, true}},
};

/** Occurrences of a call; those below 0 count from the last, -1. */
struct Range {
    int first, last;
    bool contains(int occurrence, int calls) const {
        const auto counted = [&](int end) { return end < 0 ? calls + 1 + end : end; };
        return counted(first) <= occurrence && occurrence <= counted(last);
    }
};
constexpr Patience kEnds = Patience::kUntilDone, kBlocks = Patience::kNone, kGoesOn = Patience::kAfterwards;
constexpr Range kAny{1, -1}, kFirst{1, 1}, kNotFirst{2, -1}, kLast{-1, -1}, kNotLast{1, -2};

/** Outcomes, as `ShotOutcome` tells them, of a still and of a live photo. */
struct Expected {
    const char* still;
    const char* live;
};
constexpr Expected kWhole{"0: still", "0: still mpvd gain qext"};
constexpr Expected kTimedOut{"-1 after 10 s: as it was", "-1 after 10 s: as it was"};
/** The app has been told of a failure; what comes of the frame later is a still all the same. */
constexpr Expected kTooLate{"-1 after 10 s: still", "-1 after 10 s: still"};
constexpr Expected kRefused{"-1: as it was", "-1: as it was"};
/** What the muxer's last word is is not looked at, on purpose: it is told to stop, and the frame is done. */
constexpr Expected kUnnoticed{"0: as it was", "0: mpvd gain qext"};
constexpr Expected kCut{"", "0: still, then cut"};

struct Row {
    const char* call;
    Range where;
    std::vector<Fault> faults;
    Expected expected;
    const char* line = "";  ///< that the log then has, see `expectedLine`
    Patience patience = Patience::kUntilDone;
    const char* scene = "";  ///< what the scene's name begins with
    int count = 1;
};

std::vector<Fault> failing(std::initializer_list<int> statuses) {
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
constexpr char kEncoderFailed[] = "E/QuillHeifWriter: Encoder failed!";
constexpr char kNoMuxer[] = "E/QuillHeifWriter: !!! Muxer start error, please check file access permision";
constexpr char kNoOutput[] = "W/QuillHeifEncoder: Received error %d (%n) instead of output";
constexpr char kNoWindow[] = "E/QuillHeifEncoder: Surface::dequeueBuffer returned error %d";
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
        {"MediaCodec::queueInputBuffer", kAny, kStall, kTimedOut, kEncoderFailed, kBlocks},
        {"MediaCodec::queueInputBuffer", kAny, kStall, kTooLate, kFailed, kGoesOn},
        {"MediaCodec::dequeueOutputBuffer", kAny, failing({WOULD_BLOCK, -1014}), kWhole},
        {"MediaCodec::dequeueOutputBuffer", kAny, kStall, kTimedOut, kEncoderFailed, kBlocks},
        {"MediaCodec::dequeueOutputBuffer", kAny, kStall, kTooLate, kFailed, kGoesOn},
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
        {"ANativeWindow::dequeueBuffer", kAny, kStall, kTimedOut, kEncoderFailed, kBlocks},
        {"ANativeWindow::dequeueBuffer", kAny, kStall, kTooLate, kFailed, kGoesOn},
        {"ANativeWindow::cancelBuffer", kAny, kRefusing, kTimedOut,
         "E/QuillHeifEncoder: surface buffer of 256 x 512 is too small for a tile"},
        {"ANativeWindow::queueBuffer", kAny, kRefusing, kTimedOut, kEncoderFailed, kBlocks},
        {"GraphicBuffer::lock", kAny, kRefusing, kWhole},
        {"GraphicBuffer::lock", kAny, {Fault::nullBuffer()}, kWhole},
        {"GraphicBuffer::unlock", kAny, kRefusing, kWhole},
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
        {"MediaMuxer::create", kAny, kStall, kTooLate, kFailed, kGoesOn},
        {"MediaMuxer::setOrientationHint", kAny, kRefusing, kWhole},
        {"MediaMuxer::addTrack", kAny, kRefusing, kTimedOut, kNoMuxer},
        {"MediaMuxer::start", kAny, kRefusing, kTimedOut, kNoMuxer},
        {"MediaMuxer::writeSampleData", kFirst, kRefusing, kWhole},
        {"MediaMuxer::writeSampleData", kNotFirst, kRefusing, kUnnoticed},
        {"MediaMuxer::writeSampleData", kAny, kStall, kTooLate, kFailed, kGoesOn},
        {"MediaMuxer::stop", kAny, kStall, kTooLate, kFailed, kGoesOn},
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
        {"fcntl", kAny, failing({-EBADF}), kRefused},
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

using Calls = std::map<std::string, int>;

bool isReadOnceAProcess(const std::string& call) {
    return call.rfind("MediaCodecList", 0) == 0 || call.rfind("MediaCodecInfo", 0) == 0;
}

/** How often these are made depends on how fast the codec is; as often as this they are made by any. */
const Calls kPolled = {{"MediaCodec::dequeueInputBuffer", 3},
                       {"MediaCodec::dequeueOutputBuffer", 5},
                       {"ABuffer::ABuffer", 8},
                       {"property_get", 9},
                       {"usleep", 1}};

int callsOf(const Calls& made, const std::string& call) {
    const auto polled = kPolled.find(call);
    const auto found = made.find(call);
    if (found == made.end()) return 0;
    return polled == kPolled.end() ? found->second : polled->second;
}

/** The first, the middle and the last; all of a few. */
std::set<int> occurrencesToFail(int calls) {
    if (calls <= 4) {
        std::set<int> all;
        for (int i = 1; i <= calls; ++i) all.insert(i);
        return all;
    }
    return {1, (calls + 1) / 2, calls};
}

struct Case {
    const Road* road;
    const Row* row;
    Fault fault;
    int occurrence;

    std::string name() const;
};

std::string textOf(const Fault& fault) {
    switch (fault.kind) {
        case Fault::Kind::kNothing:
            return "null";
        case Fault::Kind::kNullBuffer:
            return "no memory";
        case Fault::Kind::kShortBuffer:
            return std::to_string(fault.size) + " only";
        case Fault::Kind::kFlags:
            return "flags " + std::to_string(fault.status);
        case Fault::Kind::kFormatChange:
            return "format change";
        case Fault::Kind::kStall:
            return "blocks";
        case Fault::Kind::kLate:
            return "is late";
        case Fault::Kind::kNoOutput:
            return "no output";
        default:
            break;
    }
    const std::string name = statusName(fault.status);
    if (name != "??") return name;
    const char* const error = strerrorname_np(-fault.status);
    return error == nullptr ? std::to_string(fault.status) : error;
}

std::string Case::name() const {
    return std::string(row->call) + " #" + std::to_string(occurrence) + (row->count == kForEver ? " and on" : "") +
           ": " + textOf(fault) + " (" + road->scene.name + ")";
}

/** The row's line with the status' text, number and name, and the component, filled in. */
std::string expectedLine(const Case& test) {
    std::string line = test.row->line;
    const int status = test.fault.status;
    const bool qti = test.road->scene.device == "vendor-qti";
    const std::pair<std::string, std::string> kMarks[] = {
            {"%s", statusText(status)},
            {"%d", std::to_string(status)},
            {"%n", statusName(status)},
            {"%c", qti ? "c2.qti.hevc.encoder" : "c2.quill.hevc.encoder"}};
    for (const auto& [mark, text] : kMarks) {
        const size_t at = line.find(mark);
        if (at != std::string::npos) line.replace(at, mark.size(), text);
    }
    return line;
}

const char* expectedOf(const Row& row, const Scene& scene) {
    return scene.live ? row.expected.live : row.expected.still;
}

void prepare(const Road& road) {
    Faults::instance().reset();
    if (!road.failing.empty()) Faults::instance().inject(road.failing, road.fault, 1, kForEver);
}

std::string leaksOf(const ShotOutcome& outcome) {
    std::string leaks;
    if (outcome.leakedDescriptors != 0) leaks += " leaks descriptors;";
    if (outcome.leakedThreads != 0) leaks += " leaks threads;";
    if (!outcome.released) leaks += " keeps the app's memory;";
    return leaks;
}

/** A line for everything that is not as it should be after one fault, and after the shot that follows it. */
std::string problemsOf(const Case& test) {
    prepare(*test.road);
    Faults::instance().inject(test.row->call, test.fault, test.occurrence, test.row->count);
    const auto struck = [&] { return Faults::instance().occurrences()[test.row->call] >= test.occurrence; };
    const ShotOutcome outcome = shoot(test.road->scene, test.row->patience, struck, false);
    std::string problems = leaksOf(outcome);
    if (!struck()) problems += " never made;";
    if (outcome.text() != expectedOf(*test.row, test.road->scene)) problems += " gives \"" + outcome.text() + "\";";
    const std::string line = expectedLine(test);
    if (!line.empty() && std::count(outcome.log.begin(), outcome.log.end(), line) == 0) {
        problems += " logs no \"" + line + "\";\n" + joined(outcome.log);
    }
    return problems.empty() ? "" : "! " + test.name() + problems + "\n";
}

std::string problemsOfFreshWriter(const Case& after) {
    constexpr double kFaithful = 35;
    Faults::instance().reset();
    Scene scene = after.road->scene;
    scene.width = 500;  // one tile is enough
    const ShotOutcome outcome = shoot(scene, true);
    const bool whole = outcome.text() == (scene.live ? kWhole.live : kWhole.still) && outcome.luma >= kFaithful;
    if (whole && leaksOf(outcome).empty()) return "";
    return "! " + after.name() + " spoils the next: " + outcome.text() + ", " + std::to_string(outcome.luma) + " dB" +
           leaksOf(outcome) + "\n";
}

void adopt(const Scene& scene) {
    setenv("QUILL_DEVICE", scene.device.c_str(), 1);
    setProperties("debug.quill.host.x265.preset=ultrafast");
}

/** All of one call on one road, in a process of their own. */
std::string runUnit(const std::vector<Case>& unit) {
    adopt(unit.front().road->scene);
    std::string report;
    for (const Case& test : unit) {
        report += problemsOf(test);
        for (const auto& [call, made] : Faults::instance().occurrences()) report += "= " + call + "\n";
        if (!isReadOnceAProcess(test.row->call)) report += problemsOfFreshWriter(test);
    }
    if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0) {
        report += "! " + unit.front().name() + " and its like leak memory\n";
    }
    return report;
}

/** What each platform call is made how often on a road. */
Calls callsOnTheWay(const Road& road) {
    const std::string text = inChild([&] {
        adopt(road.scene);
        prepare(road);
        shoot(road.scene);
        std::string made;
        for (const auto& [call, count] : Faults::instance().occurrences()) {
            made += call + " " + std::to_string(count) + "\n";
        }
        return made;
    });
    Calls calls;
    for (const std::string& line : cutIntoLines(text)) {
        const size_t space = line.rfind(' ');
        calls[line.substr(0, space)] = std::stoi(line.substr(space + 1));
    }
    return calls;
}

void addCases(const Road& road, const std::string& call, int calls, std::vector<Case>* cases) {
    for (const Row& row : kRows) {
        if (row.call != call || std::string(road.scene.name).rfind(row.scene, 0) != 0) continue;
        for (const int occurrence : occurrencesToFail(calls)) {
            if (!row.where.contains(occurrence, calls)) continue;
            for (const Fault& fault : row.faults) cases->push_back({&road, &row, fault, occurrence});
        }
    }
}

/** Cases that share a process. What is read once a process has one for each. */
std::vector<std::vector<Case>> unitsOf(const std::vector<Case>& cases) {
    std::vector<std::vector<Case>> units;
    const auto together = [](const Case& one, const Case& other) {
        return one.road == other.road && std::string(one.row->call) == other.row->call &&
               !isReadOnceAProcess(one.row->call);
    };
    for (const Case& test : cases) {
        if (units.empty() || !together(units.back().back(), test)) units.emplace_back();
        units.back().push_back(test);
    }
    return units;
}

/** Runs every `step`th unit; a process that dies is a problem like others. */
std::string runUnits(const std::vector<std::vector<Case>>& units, size_t first, size_t step) {
    std::string report;
    for (size_t i = first; i < units.size(); i += step) {
        const std::string text = inChild([&] { return runUnit(units[i]); });
        const bool lived = text.empty() || text[0] == '!' || text[0] == '=';
        report += lived ? text : "! " + units[i].front().name() + " or its like: " + text + "\n";
    }
    return report;
}

std::string whereOf(const Row& row) {
    if (row.count == kForEver) return row.where.last == -1 ? "from any on" : "all";
    if (row.where.first == row.where.last) return row.where.first < 0 ? "last" : std::to_string(row.where.first);
    if (row.where.first > 1) return "from " + std::to_string(row.where.first);
    return row.where.last == -1 ? "any" : "all but last";
}

std::string callsCell(const std::string& call, const std::vector<Calls>& made) {
    if (kPolled.count(call) != 0) return "polled";
    std::string cell;
    for (size_t i = 0; i < std::size(kCameraRoads); ++i) {
        cell += (i == 0 ? "" : " / ") + std::to_string(callsOf(made[i], call));
    }
    return cell;
}

std::string markdownOf(const Row& row, const std::vector<Calls>& made) {
    std::string faults;
    for (const Fault& fault : row.faults) faults += (faults.empty() ? "" : ", ") + textOf(fault);
    std::string line = *row.line == '\0' ? "" : "`" + std::string(row.line) + "`";
    std::replace(line.begin(), line.end(), '|', '/');
    return "| `" + std::string(row.call) + "` | " + callsCell(row.call, made) + " | " + whereOf(row) + " | " + faults +
           " | " + row.expected.still + " | " + row.expected.live + " | " + line + " |\n";
}

std::string tableOf(const std::vector<Calls>& made) {
    std::string table =
            "| call | made (stills / live photos by buffers, then by surface) | failed | how | still | live photo | "
            "log |\n|---|---|---|---|---|---|---|\n";
    for (const Row& row : kRows) table += markdownOf(row, made);
    return table;
}

TEST(FaultMatrix, NoFailureOfThePlatformHarmsTheApp) {
    const TestDevice nameless(xml(Codec{""}), "ro.build.version.quill.api=34");
    std::vector<Road> roads(std::begin(kCameraRoads), std::end(kCameraRoads));
    roads.push_back({{"buffers, still, codec by type", getenv("QUILL_DEVICE"), FORMAT_NV12, false, false}});
    roads.push_back({kCameraRoads[2].scene, "ANativeWindow::dequeueBuffer", Fault::shortBuffer(256)});

    std::vector<Calls> made;
    std::set<std::string> known, listed;
    std::vector<Case> cases;
    for (const Row& row : kRows) listed.insert(row.call);
    for (const Road& road : roads) {
        made.push_back(callsOnTheWay(road));
        const bool detour = made.size() > std::size(kCameraRoads);
        for (const auto& [call, count] : made.back()) {
            if (detour && known.count(call) != 0) continue;
            known.insert(call);
            addCases(road, call, callsOf(made.back(), call), &cases);
        }
    }

    const std::vector<std::vector<Case>> units = unitsOf(cases);
    const std::vector<std::string> reports =
            inChildren({[&] { return runUnits(units, 0, 2); }, [&] { return runUnits(units, 1, 2); }});
    for (const std::string& report : reports) {
        for (const std::string& line : cutIntoLines(report)) {
            if (line[0] == '=')
                known.insert(line.substr(2));
            else
                ADD_FAILURE() << line;
        }
    }
    for (const std::string& call : known) EXPECT_EQ(1u, listed.count(call)) << call << " is made and never failed";
    for (const Row& row : kRows) {
        EXPECT_TRUE(std::any_of(cases.begin(), cases.end(), [&](const Case& test) { return test.row == &row; }))
                << row.call << " " << whereOf(row) << " is listed and never failed";
    }
    RecordProperty("cases", static_cast<int>(cases.size()));
    std::printf("%zu cases in %zu processes\n", cases.size(), units.size());
    expectGeneratedSection(QUILL_SOURCE_DIR "/docs/reliability.md", "fault matrix", tableOf(made),
                           QUILL_MADE_DIR "/fault_matrix.md");
}

}  // namespace
