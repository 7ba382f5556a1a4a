#include <cutils/properties.h>
#include <gmock/gmock.h>
#include <log/log.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#define ATRACE_TAG ATRACE_TAG_GRAPHICS
#include <utils/Trace.h>

#include <filesystem>

#include "support/LogCapture.h"
#include "support/TestDevice.h"

namespace {

using namespace quill::test;
using namespace std::string_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

std::string get(const char* key, const char* fallback = "fallback") {
    char value[PROPERTY_VALUE_MAX];
    const int length = property_get(key, value, fallback);
    EXPECT_EQ(static_cast<size_t>(length), std::string(value).size());
    return value;
}

std::string textOf(const TemporaryFile& file) {
    const std::vector<uint8_t> bytes = file.bytes();
    return {bytes.begin(), bytes.end()};
}

TEST(Device, PropertiesAreItsBuildPropsUnlessTheEnvironmentOverridesThem) {
    const TestDevice device("",
                            "# a comment\n#a=b\n\n ro.soc.model = lab7 \r\nro.empty=\nno equals sign\n=x\nro.twice=1\n"
                            "ro.twice=2=3\nro.long=" +
                                    std::string(100, 'x'));
    EXPECT_EQ("lab7", get("ro.soc.model"));
    EXPECT_EQ("2=3", get("ro.twice"));
    for (const char* key : {"ro.empty", "ro.unset", "#a", ""}) EXPECT_EQ("fallback", get(key)) << key;
    EXPECT_EQ("", get("ro.unset", nullptr));
    EXPECT_EQ(std::string(PROPERTY_VALUE_MAX - 1, 'x'), get("ro.long"));
    EXPECT_EQ(std::string(PROPERTY_VALUE_MAX - 1, 'd'), get("ro.unset", std::string(200, 'd').c_str()));

    setProperties(",,x, ro.soc.model = bench ,ro.other=1");
    EXPECT_EQ("bench", get("ro.soc.model"));
    EXPECT_EQ("fallback", get("ro.soc"));
    setProperties("ro.soc.model=");
    EXPECT_EQ("fallback", get("ro.soc.model"));
}

TEST(Device, UnknownOneIsReportedOnceWithTheKnownOnes) {
    const LogCapture log;
    setenv("QUILL_DEVICE", "no-such-device", 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ("fallback", get("ro.soc.model"));
    EXPECT_THAT(log.of("QuillPlatform"),
                ElementsAre(AllOf(HasSubstr("/no-such-device; give"), HasSubstr("no-encoder, software-only,"))));
}

// The level is read when a process starts, so this is run in processes of its own, below.
TEST(Child, LogsOneLinePerLevel) {
    for (int priority = ANDROID_LOG_VERBOSE; priority <= ANDROID_LOG_ERROR; ++priority) {
        __android_log_print(priority, "Tag", "said");
    }
}

TEST(Log, PrintsNothingUnlessAskedAndThenFromTheLevelUp) {
    const std::string program = QUILL_EMULATOR " " + std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string errors = "E Tag: said\n", infos = "I Tag: said\nW Tag: said\n" + errors;
    for (const auto& [environment, said] :
         {std::pair("-u QUILL_LOG", ""s),
          {"QUILL_LOG=silent", ""},
          {"QUILL_LOG=error", errors},
          {"QUILL_LOG=info", infos},
          {"QUILL_LOG=verbose", "V Tag: said\nD Tag: said\n" + infos},
          {"QUILL_LOG=loud", "QUILL_LOG=loud is not a level; give silent, error, warn, info, debug or verbose\n"}}) {
        const TemporaryFile output;
        const std::string command = program + " --gtest_filter=Child.* >/dev/null 2>" + output.path();
        ASSERT_EQ(0, system(("env " + (environment + (" " + command))).c_str()));
        EXPECT_EQ(said, textOf(output)) << environment;
    }
}

// Tests in Java read the trace of a process that ends normally.
TEST(Trace, IsThereWhenTheProcessDiesWithItsNamesQuoted) {
    const TemporaryFile trace;
    setenv("QUILL_TRACE", trace.path().c_str(), 1);
    const pid_t child = fork();
    if (child == 0) {
        pthread_setname_np(pthread_self(), "worker");
        { ATRACE_NAME("outer \"quoted\"\n"); }
        _exit(1);
    }
    waitpid(child, nullptr, 0);
    EXPECT_THAT(textOf(trace), AllOf(HasSubstr("\"args\":{\"name\":\"worker\"}"), HasSubstr("\"ph\":\"E\""),
                                     HasSubstr("\"name\":\"outer \\\"quoted\\\"?\""), EndsWith("}")));
}

}  // namespace
