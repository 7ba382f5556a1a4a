// Every platform call that the library makes, failed as docs/faults.md says: what the app gets, what is in its file,
// what the log says, and that nothing leaks.
#include <gmock/gmock.h>
#include <string.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "Clock.h"
#include "Faults.h"
#include "StatusNames.h"
#include "support/ChildProcess.h"
#include "support/FileCalls.h"
#include "support/HeifReader.h"
#include "support/Photograph.h"
#include "support/TestDevice.h"

// There when a sanitizer looks for leaks.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));  // NOLINT(bugprone-reserved-identifier)

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;

constexpr int kForEver = INT_MAX;
constexpr int64_t kTimeOutUs = 10000000;

struct Failure {
    std::string text;
    Fault fault;

    bool blocks() const { return fault.kind == Fault::Kind::kStall; }
    bool blocksForGood() const { return blocks() && text != "blocks until the time-out"; }
};

/** A row of the table. */
struct Row {
    std::string call, path, which, failures, result, line;
};

struct Path {
    PhotoCase photo;
    const char* calls;         ///< that are failed here: all, those of the system, or one
    std::string failing = "";  ///< a call that fails throughout, for what is only done about that
    Fault fault = {};

    bool tries(const std::string& call) const {
        const std::string those = calls;
        return those == "all" || (those == "system" ? call.find("::") == std::string::npos : call == those);
    }
};

struct Case {
    const Path& path;
    const Row& row;
    Failure failure;
    int occurrence;

    std::string name() const {
        return row.call + " #" + std::to_string(occurrence) + " (" + path.photo.name + "): " + failure.text;
    }
};

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        const size_t first = part.find_first_not_of(" `"), last = part.find_last_not_of(" `");
        parts.push_back(first == std::string::npos ? "" : part.substr(first, last + 1 - first));
    }
    return parts;
}

std::vector<Row> readTable() {
    std::ifstream file(QUILL_SOURCE_DIR "/docs/faults.md");
    std::vector<Row> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("| `", 0) != 0) continue;
        const std::vector<std::string> cells = split(line, '|');
        const size_t only = cells[1].find("` (");
        const std::string path = only == std::string::npos ? "" : split(cells[1].substr(only + 3), ')')[0];
        rows.push_back({cells[1].substr(0, only), path, cells[2], cells[3], cells[4], cells.at(5)});
    }
    return rows;
}

status_t statusOf(const std::string& name) {
    if (isdigit(name.back())) return std::stoi(name);
    for (int error = 1; error < 200; ++error) {
        const char* const known = strerrorname_np(error);
        if (name == statusName(-error) || (known != nullptr && name == known)) return -error;
    }
    if (name == statusName(UNKNOWN_ERROR)) return UNKNOWN_ERROR;
    throw std::invalid_argument(name);
}

Failure failureOf(const std::string& text) {
    static const std::map<std::string, Fault> kKinds = {
            {"null", Fault::nothing()},       {"no memory", Fault::nullBuffer()},
            {"no output", Fault::noOutput()}, {"format change", Fault::formatChange()},
            {"late", Fault::late(1000)},
    };
    const auto known = kKinds.find(text);
    if (known != kKinds.end()) return {text, known->second};
    if (text.rfind("blocks", 0) == 0) return {text, Fault::stalling()};
    if (text.rfind("flags ", 0) == 0) return {text, Fault::flags(std::stoi(text.substr(6)))};
    if (text.find(' ') != std::string::npos) return {text, Fault::shortBuffer(std::stoul(text))};
    return {text, Fault::failing(statusOf(text))};
}

bool isFromThereOn(const Row& row) { return row.which.rfind(" on") == row.which.size() - 3; }

/** Of `calls`: the first, the middle and the last, or those of them that the row says. */
std::set<int> occurrencesOf(const Row& row, int calls) {
    const std::string which = isFromThereOn(row) ? row.which.substr(0, row.which.size() - 3) : row.which;
    std::set<int> any = {1, (calls + 1) / 2, calls};
    if (which == "not first") any.erase(1);
    if (which == "not last") any.erase(calls);
    if (which == "any" || which.rfind("not", 0) == 0) return any;
    return {which == "first" ? 1 : which == "last" ? calls : std::stoi(which)};
}

std::string expectedOf(const Case& test) {
    const std::string& result = test.row.result;
    if (!test.path.photo.live) return result;
    return result == "0: still" ? "0: still mpvd gain qext" : result == "0: as it was" ? "0: mpvd gain qext" : result;
}

/** The row's line with the status' text, number and name, and the component, filled in. */
std::string expectedLine(const Case& test) {
    std::string line = test.row.line;
    const int status = test.failure.fault.status;
    const char* const component =
            test.path.photo.device == "vendor-qti" ? "c2.qti.hevc.encoder" : "c2.quill.hevc.encoder";
    for (const auto& [mark, text] : {std::pair<std::string, std::string>("%s", statusText(status)),
                                     {"%d", std::to_string(status)},
                                     {"%n", statusName(status)},
                                     {"%c", component}}) {
        const size_t at = line.find(mark);
        if (at != std::string::npos) line.replace(at, mark.size(), text);
    }
    return line;
}

/** Where nothing ends the frame, the app's ten seconds pass in a tenth. */
bool isWaitedFor(const Case& test) {
    const bool saysLittle = test.row.line.empty() || test.row.line == "E/QuillHeifWriter: Encoder failed!";
    return test.row.result.find("after 10 s") != std::string::npos && saysLittle;
}

/** Whether a codec that is stopped ends the call that blocks. */
bool endsWithTheCodec(const Case& test) {
    const std::string& call = test.row.call;
    if (call == "MediaCodec::stop" || call == "MediaCodec::release") return false;
    return call.rfind("MediaCodec::", 0) == 0 || call.rfind("ANativeWindow", 0) == 0;
}

std::string readBack(const App& app) {
    std::string text = app.fileText();
    if (text.find(" still") != 0) return text;
    const ReadStill read = readStill(app.output.path(), false);
    return read.error.empty() ? text : text + " (" + read.error + ")";
}

void prepare(const Case& test) {
    Faults::instance().reset();
    if (!test.path.failing.empty()) Faults::instance().inject(test.path.failing, test.path.fault, 1, kForEver);
    if (test.failure.text == "blocks and the codec does not stop")
        Faults::instance().inject("MediaCodec::stop", Fault::failing(INVALID_OPERATION));
    if (test.occurrence == 0) return;
    Faults::instance().inject(test.row.call, test.failure.fault, test.occurrence,
                              isFromThereOn(test.row) ? kForEver : 1);
    if (isWaitedFor(test)) Clock::instance().setScale(0.01);
}

/** What is not as the row says, empty for nothing: a photograph with its writer from `setUp` to `destroy`. */
std::string problemsOf(const Case& test) {
    const bool forGood = test.failure.blocksForGood();
    const std::string expected = expectedOf(test), line = expectedLine(test);
    // A codec that does not stop keeps its own threads; any other call the one that it blocks, and the frame's files.
    const Holdings held{line.find("The codec does not stop") == std::string::npos ? 1 : 100, 2};
    std::string problems;
    App app(test.path.photo);
    const LogCapture log;
    const Holdings before = Holdings::now();
    prepare(test);
    app.setUp();
    const auto isBlocked = [&] { return test.failure.blocks() && isMade(test.row.call, test.occurrence); };
    const long result = writeHurried(app, log, isBlocked);
    const int64_t slept = FileCalls::sleptUs();
    std::string file;
    if (result == -1) {
        // A muxer that writes when the time is up may go on writing. Anything else leaves the file to the app.
        const bool reuses = line.find("The muxer is still writing") == std::string::npos && app.fileText() != " still";
        if (reuses) file = app.fileText();
        app.scribble(reuses && file == " as it was");
    }
    Clock::instance().setScale(1);
    if (test.failure.blocks() && !forGood) {
        Faults::instance().release();
        log.waitFor(kLooperDone);
    }
    {
        const FileCalls calls(hurryOnce([&] { return forGood && isBlocked() && !endsWithTheCodec(test); }));
        app.destroy();
    }
    if (forGood && file.empty()) file = readBack(app);
    if (forGood) problems += leakedSince(before, held);
    Faults::instance().release();
    problems += leakedSince(before);
    Clock::instance().setScale(1);
    if (file.empty()) file = readBack(app);

    if (!app.holdsNothing() || app.java.callsAfterAnException != 0) problems += " keeps the app's memory;";
    if (result == -1 && !app.touched().empty()) problems += " touches" + app.touched() + ";";
    if (test.row.call != "usleep" && !isMade(test.row.call, test.occurrence)) problems += " never made;";
    const char* const when = slept < kTimeOutUs ? ":" : slept == kTimeOutUs ? " after 10 s:" : " after more than 10 s:";
    const std::string outcome = std::to_string(result) + when + file;
    if (outcome != expected) problems += " gives \"" + outcome + "\", not \"" + expected + "\";";
    if (!line.empty() && !log.has(line)) problems += " logs no \"" + line + "\";";
    return problems.empty() ? "" : "! " + test.name() + problems + "\n";
}

using Calls = std::map<std::string, int>;

/** What each platform call is made how often. */
Calls callsOf(const Case& plain) {
    // How often these are made depends on how fast the codec is; as often as this they are made by any.
    Calls calls = {{"MediaCodec::dequeueInputBuffer", 3},
                   {"MediaCodec::dequeueOutputBuffer", 5},
                   {"ABuffer::ABuffer", 8},
                   {"property_get", 9},
                   {"usleep", 1}};
    const std::string text = inChild([&] {
        const std::string problems = problemsOf(plain);
        std::string made;
        for (const auto& [call, count] : Faults::instance().occurrences())
            made += call + " " + std::to_string(count) + "\n";
        return problems + made;
    });
    Calls made;
    for (const std::string& line : cutIntoLines(text)) {
        const size_t space = line.rfind(' ');
        const std::string call = line.substr(0, space);
        made[call] = calls.count(call) != 0 ? calls[call] : std::atoi(line.c_str() + space);
    }
    return made;
}

/** A line `= CALL` for each call that is made, `+ NUMBER` for each row that is tried, `! ...` for each problem. */
std::string tryPath(const Path& path, const std::vector<Row>& rows) {
    setenv("QUILL_DEVICE", path.photo.device.c_str(), 1);
    setProperties("debug.quill.host.encoder=free");
    const Row noRow{"", "", "first", "", path.failing.empty() ? "0: still" : "-1 after 10 s: as it was", ""};
    const Case plain{path, noRow, {}, 0};
    const Calls calls = callsOf(plain);
    std::string report;
    for (const auto& [call, made] : calls) report += "= " + call + "\n";
    for (size_t i = 0; i < rows.size(); ++i) {
        const Row& row = rows[i];
        const auto made = calls.find(row.call);
        const bool here = std::string(path.photo.name).find(row.path) != std::string::npos;
        if (made == calls.end() || !here || !path.tries(row.call)) continue;
        report += "+ " + std::to_string(i) + "\n";
        const bool once = row.call.rfind("MediaCodecList", 0) == 0 || row.call.rfind("MediaCodecInfo", 0) == 0;
        for (const int occurrence : occurrencesOf(row, made->second)) {
            for (const std::string& failure : split(row.failures, ',')) {
                const Case test{path, row, failureOf(failure), occurrence};
                fprintf(stderr, "%s\n", test.name().c_str());  // a process that dies has said what of
                report += once ? inChild([&] { return problemsOf(test); }) : problemsOf(test);
            }
        }
        if (!once && !problemsOf(plain).empty())
            report += "! " + row.call + ": the next one fails\n" + problemsOf(plain);
    }
    if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0)
        report += std::string("! ") + path.photo.name + " leaks memory\n";
    return report;
}

TEST(FaultMatrix, NoFailureOfThePlatformHarmsTheApp) {
    const TestDevice nameless(xml(Codec{""}), "ro.build.version.quill.api=34");
    const PhotoCase bitmap{"live, bitmap", "vendor-qti", FORMAT_RGBA8888, true, true};
    const Path paths[] = {
            {{"still, array", "heic-encoder", FORMAT_P010, false, false}, "all"},
            {bitmap, "all"},
            {{"live, array", "vendor-qti", FORMAT_P010, true, false}, "system"},
            {{"still, codec by type", getenv("QUILL_DEVICE"), FORMAT_NV12, false, false}, "MediaCodec::CreateByType"},
            {bitmap, "ANativeWindow::cancelBuffer", "ANativeWindow::dequeueBuffer", Fault::shortBuffer(256)},
    };
    const std::vector<Row> rows = readTable();
    std::vector<std::function<std::string()>> bodies;
    for (const Path& path : paths) bodies.emplace_back([&] { return tryPath(path, rows); });

    std::set<std::string> made, tried, listed;
    for (const std::string& report : inChildren(bodies)) {
        for (const std::string& line : cutIntoLines(report)) {
            if (line[0] == '=') {
                made.insert(line.substr(2));
            } else if (line[0] == '+') {
                tried.insert(line.substr(2));
            } else {
                ADD_FAILURE() << line;
            }
        }
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        listed.insert(rows[i].call);
        EXPECT_EQ(1u, tried.count(std::to_string(i))) << rows[i].call << " " << rows[i].which << " is never failed";
    }
    for (const std::string& call : made) EXPECT_EQ(1u, listed.count(call)) << call << " is made and not listed";
}

}  // namespace
