// Every platform call that the library makes, failed at its first, middle and last occurrence with each status that
// means something there: what the app gets, what is in its file, what the log says, and that nothing leaks.
#include <gmock/gmock.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <set>

#include "Faults.h"
#include "StatusNames.h"
#include "library/FaultRows.h"
#include "support/ChildProcess.h"
#include "support/GeneratedDocs.h"
#include "support/Shot.h"
#include "support/TestDevice.h"

// There when a sanitizer looks for leaks.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace {

using namespace android;
using namespace quill::test;
using quill::host::Fault;
using quill::host::Faults;

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
    Patience patience;

    std::string name() const;
};

std::string stallText(const Row& row) {
    constexpr const char* kTexts[] = {"", "for good", "for good with a codec that does not stop",
                                      "until after the time-out"};
    std::string text;
    for (const Patience patience : row.patiences) {
        text += (text.empty() ? "blocks " : ", ") + std::string(kTexts[static_cast<int>(patience)]);
    }
    return text;
}

/** As the table names it; the bitmap calls have numbers of their own, and -1 is what is told of an absent object. */
std::string textOf(const Row& row, const Fault& fault) {
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
            return stallText(row);
        case Fault::Kind::kLate:
            return "late";
        case Fault::Kind::kNoOutput:
            return "no output";
        default:
            break;
    }
    const char* const error = strerrorname_np(negated(fault.status));
    const std::string name = statusName(fault.status);
    if (fault.status == -1 || error == nullptr || strncmp(row.call, "AndroidBitmap", 13) == 0) {
        return name == "UNKNOWN_ERROR" ? name : std::to_string(fault.status);
    }
    return name == "??" ? error : name;
}

std::string Case::name() const {
    return std::string(row->call) + " #" + std::to_string(occurrence) + (row->count == kForEver ? " and on" : "") +
           ": " + textOf(*row, fault) + " (" + road->scene.name + ", patience " +
           std::to_string(static_cast<int>(patience)) + ")";
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
    if (!outcome.touched.empty()) leaks += " touches" + outcome.touched + ";";
    return leaks;
}

/** A line for everything that is not as it should be after one fault, and after the shot that follows it. */
std::string problemsOf(const Case& test) {
    constexpr int kManyThreads = 100;
    prepare(*test.road);
    Faults::instance().inject(test.row->call, test.fault, test.occurrence, test.row->count);
    const std::string expected = expectedOf(*test.row, test.road->scene);
    Taking taking;
    taking.patience = test.patience;
    taking.blocked = [&] { return Faults::instance().occurrences()[test.row->call] >= test.occurrence; };
    taking.reusesFile = expected.find("as it was") != std::string::npos && test.row->line != kMuxerWrites;
    // A codec that does not stop keeps its own; any other call keeps the one that it blocks.
    if (test.row->line == kLeftBehind) taking.held.threads = kManyThreads;
    const ShotOutcome outcome = shoot(test.road->scene, taking);
    std::string problems = leaksOf(outcome);
    if (!taking.blocked()) problems += " never made;";
    if (outcome.text() != expected) problems += " gives \"" + outcome.text() + "\";";
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
    Taking taking;
    taking.decode = true;
    const ShotOutcome outcome = shoot(scene, taking);
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
    }
    if (!isReadOnceAProcess(unit.front().row->call)) report += problemsOfFreshWriter(unit.back());
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
            for (const Fault& fault : row.faults) {
                for (const Patience patience : row.patiences) {
                    cases->push_back({&road, &row, fault, occurrence, patience});
                }
            }
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
    bool anywhere = false;
    for (size_t i = 0; i < std::size(kCameraRoads); ++i) {
        cell += (i == 0 ? "" : " / ") + std::to_string(callsOf(made[i], call));
        anywhere = anywhere || callsOf(made[i], call) > 0;
    }
    return anywhere ? cell : "on detours";
}

std::string markdownOf(const Row& row, const std::vector<Calls>& made) {
    std::string faults;
    for (const Fault& fault : row.faults) faults += (faults.empty() ? "" : ", ") + textOf(row, fault);
    std::string line = *row.line == '\0' ? "" : "`" + std::string(row.line) + "`";
    std::replace(line.begin(), line.end(), '|', '/');
    const std::string only = *row.scene == '\0' ? "" : " (" + std::string(row.scene) + ")";
    return "| `" + std::string(row.call) + "`" + only + " | " + callsCell(row.call, made) + " | " + whereOf(row) +
           " | " + faults + " | " + row.expected.still + " | " + row.expected.live + " | " + line + " |\n";
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
