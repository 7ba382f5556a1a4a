#include <cutils/properties.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log/log.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#define ATRACE_TAG ATRACE_TAG_GRAPHICS
#include <utils/Trace.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "BuildProp.h"
#include "Device.h"

namespace quill::host {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Pair;

std::string get(const char* key, const char* fallback = "fallback") {
    char value[PROPERTY_VALUE_MAX];
    const int length = property_get(key, value, fallback);
    EXPECT_EQ(static_cast<size_t>(length), std::string(value).size());
    return value;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/** A device folder made by the test. */
class Device : public ::testing::Test {
  protected:
    Device() {
        mFolder = ::testing::TempDir() + "quill-device-" + std::to_string(getpid());
        std::filesystem::create_directories(mFolder);
        std::ofstream(mFolder + "/build.prop") << "# a comment\n\n ro.soc.model = lab7 \r\nro.empty=\nno equals sign\n"
                                               << "ro.twice=1\nro.twice=2=3\nro.long=" << std::string(100, 'x') << "\n";
        setenv("QUILL_DEVICE", mFolder.c_str(), 1);
        unsetenv("QUILL_PROPERTIES");
    }
    ~Device() override { std::filesystem::remove_all(mFolder); }

    std::string mFolder;
};

TEST_F(Device, PropertiesComeFromItsBuildProp) {
    EXPECT_EQ("lab7", get("ro.soc.model"));
    EXPECT_EQ("2=3", get("ro.twice"));
    EXPECT_EQ("fallback", get("ro.empty"));
    EXPECT_EQ("fallback", get("ro.unset"));
    EXPECT_EQ("", get("ro.unset", nullptr));
    EXPECT_EQ(std::string(PROPERTY_VALUE_MAX - 1, 'x'), get("ro.long"));
    EXPECT_EQ(std::string(PROPERTY_VALUE_MAX - 1, 'd'), get("ro.unset", std::string(200, 'd').c_str()));
}

TEST_F(Device, EnvironmentOverridesItAtEveryCall) {
    setenv("QUILL_PROPERTIES", "ro.other=1,ro.soc.model=bench", 1);
    EXPECT_EQ("bench", get("ro.soc.model"));
    setenv("QUILL_PROPERTIES", "ro.soc.model=", 1);
    EXPECT_EQ("fallback", get("ro.soc.model"));
}

TEST(BuildProp, OverrideIsFoundByItsWholeKeyOnly) {
    EXPECT_EQ(std::nullopt, findOverride("ro.soc.model=a", "ro.soc"));
    EXPECT_EQ("b", findOverride(",,x, ro.soc = b ,", "ro.soc"));
    EXPECT_THAT(parseBuildProp("=x\n#a=b\nc=d"), ElementsAre(Pair("c", "d")));
}

std::vector<std::string>* gLines = nullptr;

void collectLine(const __android_logger_data* line, const char* message) {
    gLines->push_back(std::to_string(line->priority) + " " + line->tag + ": " + message);
}

TEST(DeviceLookUp, UnknownDeviceIsReportedOnceWithTheKnownOnes) {
    std::vector<std::string> lines;
    gLines = &lines;
    __android_log_set_logger(collectLine);
    setenv("QUILL_DEVICE", "no-such-device", 1);
    EXPECT_THAT(deviceFolder(), EndsWith("/no-such-device"));
    EXPECT_EQ("fallback", get("ro.soc.model"));
    EXPECT_THAT(lines, ElementsAre(HasSubstr("6 QuillPlatform: QUILL_DEVICE: There is no device folder")));
}

/** Standard error of this program, started again by `command` for the case below only. */
std::string errorsOf(const std::string& command) {
    const std::string program = QUILL_EMULATOR " " + std::filesystem::read_symlink("/proc/self/exe").string();
    FILE* const pipe = popen(
            ("exec 2>&1 >/dev/null; " + command + " " + program + " --gtest_filter=Child.LogsOneLinePerLevel").c_str(),
            "r");
    std::string text;
    for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) text += static_cast<char>(c);
    pclose(pipe);
    return text;
}

// The level is read when a process starts, so the case is run in a process of its own.
TEST(Child, LogsOneLinePerLevel) {
    for (int priority = ANDROID_LOG_VERBOSE; priority <= ANDROID_LOG_ERROR; ++priority) {
        __android_log_print(priority, "Tag", "said");
    }
}

TEST(Log, PrintsNothingUnlessAskedAndThenFromTheLevelUp) {
    EXPECT_EQ("", errorsOf("env -u QUILL_LOG"));
    EXPECT_EQ("", errorsOf("QUILL_LOG=silent"));
    EXPECT_EQ("E Tag: said\n", errorsOf("QUILL_LOG=error"));
    EXPECT_EQ("I Tag: said\nW Tag: said\nE Tag: said\n", errorsOf("QUILL_LOG=info"));
    EXPECT_THAT(errorsOf("QUILL_LOG=verbose"), HasSubstr("V Tag: said\nD Tag: said\n"));
    EXPECT_THAT(errorsOf("QUILL_LOG=loud"), HasSubstr("QUILL_LOG=loud is not a level"));
}

// Tests in Java read the trace of a process that ends normally.
TEST(Trace, IsThereWhenTheProcessDiesWithItsNamesQuoted) {
    const std::string path = ::testing::TempDir() + "quill-trace-" + std::to_string(getpid()) + ".json";
    setenv("QUILL_TRACE", path.c_str(), 1);
    const pid_t child = fork();
    if (child == 0) {
        pthread_setname_np(pthread_self(), "worker");
        { ATRACE_NAME("outer \"quoted\"\n"); }
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::string trace = readFile(path);
    std::filesystem::remove(path);
    EXPECT_THAT(trace, HasSubstr("\"args\":{\"name\":\"worker\"}"));
    EXPECT_THAT(trace, HasSubstr("\"name\":\"outer \\\"quoted\\\"?\""));
    EXPECT_THAT(trace, HasSubstr("\"ph\":\"E\""));
    EXPECT_THAT(trace, EndsWith("}"));
}

}  // namespace
}  // namespace quill::host
