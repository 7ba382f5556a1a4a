// The Java layer over a VM made by hand: registration, options, and what the entry points check and throw.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "HeifWriterJni.h"
#include "StandardUtf8.h"
#include "support/App.h"
#include "support/LogCapture.h"

namespace {

using namespace android;
using namespace quill::test;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kTag[] = "NativeHeifWriter";

TEST(JniRegistration, PatternShapesTheNames) {
    FakeVm java;
    jniMethodFormat = "$$${method}_${method}";
    EXPECT_EQ(0x00010004, JNI_OnLoad(java.vm(), nullptr));
    EXPECT_EQ("com/quill/media/QuillHeifWriter", java.registeredClass);
    std::vector<std::string> expected;
    for (const std::string name : {"nativeSetup", "nativeCreate", "nativeProcessHeicPhotoFrame",
                                   "nativeCreateLivePhoto", "nativeCreateLivePhotoByBmp", "nativeDestory"}) {
        expected.push_back("$$" + name + "_${method}");
    }
    EXPECT_EQ(expected, java.registered);
}

TEST(JniRegistrationDeathTest, PatternWithoutPlaceholderAborts) {
    for (const char* const pattern : {"native_", "$", "${metho}", "$${method", "a longer pattern with a $ in it"}) {
        FakeVm java;
        jniMethodFormat = pattern;
        EXPECT_DEATH(JNI_OnLoad(java.vm(), nullptr),
                     HasSubstr("Invalid jniMethodFormat: could not find '${method}' in pattern"))
                << pattern;
    }
}

TEST(JniRegistrationDeathTest, WhatIsMissingIsNamed) {
    FakeVm java;
    java.missing = {"com/quill/media/QuillHeifWriter$Options"};
    EXPECT_DEATH(JNI_OnLoad(java.vm(), nullptr),
                 HasSubstr("Unable to find class com/quill/media/QuillHeifWriter$Options"));
    java.missing = {"gainmapFd"};
    EXPECT_DEATH(JNI_OnLoad(java.vm(), nullptr),
                 HasSubstr("Unable to find field gainmapFd with signature Ljava/io/FileDescriptor;"));
    java.missing = {"com/quill/media/QuillHeifWriter"};
    EXPECT_DEATH(JNI_OnLoad(java.vm(), nullptr), HasSubstr("com/quill/media/QuillHeifWriter"));
    java.missing = {};
    java.registerResult = -1;
    EXPECT_DEATH(JNI_OnLoad(java.vm(), nullptr), "RegisterNatives|Unable to register native methods");
}

TEST(JniRegistration, DetachedThreadIsAnError) {
    const LogCapture log;
    FakeVm java;
    java.attached = false;
    EXPECT_EQ(-1, JNI_OnLoad(java.vm(), nullptr));
    EXPECT_THAT(log.of(kTag), ElementsAre("E/ERROR: GetEnv failed\n"));
    EXPECT_TRUE(java.registered.empty());
}

TEST(JniMethods, StillIsLoggedAndKeepsTheDescriptorOpen) {
    const LogCapture log;
    App app({"still", "", FORMAT_NV21, false, false, 64});
    app.setUp();
    EXPECT_EQ(-1, nativeProcessHeicPhotoFrame(app.java.env(), FakeVm::asJava(&app.outputFd), app.handle,
                                              FakeVm::asJava(&app.array), nullptr, nullptr));
    EXPECT_EQ(0, app.write());
    app.destroy();
    EXPECT_THAT(log.of(kTag), ElementsAre("I/quality:90", "D/native_setup: fd " + std::to_string(app.outputFd.fd)));
    EXPECT_TRUE(log.has("D/QuillHeifWriter: ~QuillHeifWriter()")) << "the Java object's reference was the last";
    EXPECT_NE(-1, fcntl(app.outputFd.fd, F_GETFD)) << "the descriptor stays the caller's";
}

TEST(JniMethods, ReadOnlyOutputIsLoggedForAnArrayButNotForABitmap) {
    for (const bool bitmap : {true, false}) {
        App app({"live", "", FORMAT_RGBA8888, true, bitmap, 64});
        app.outputFd.fd = open(app.output.path().c_str(), O_RDONLY | O_CLOEXEC);
        const LogCapture log;
        EXPECT_EQ(-1, app.write());
        EXPECT_EQ(bitmap ? 0 : 1, log.count("E/NativeHeifWriter: File descriptor is not in read-write mode or "
                                            "write-only mode!"));
        EXPECT_EQ(bitmap ? 0u : 1u, log.lines().size());
        EXPECT_THAT(app.java.thrown, ElementsAre()) << "before the handle is looked at";
        close(app.outputFd.fd);
    }
}

TEST(JniText, ModifiedUtf8BecomesStandard) {
    using namespace std::string_literals;
    const struct {
        std::string modified, standard;
    } kCases[] = {
            {"", ""},
            {"plain \xC3\xA9 \xE2\x82\xAC", "plain \xC3\xA9 \xE2\x82\xAC"},
            {"\xED\x9F\xBF\xEE\x80\x80", "\xED\x9F\xBF\xEE\x80\x80"},  // beside the surrogates
            {"<\xED\xA0\xBD\xED\xB8\x80>", "<\xF0\x9F\x98\x80>"},      // U+1F600
            {"\xED\xA0\x80\xED\xB0\x80", "\xF0\x90\x80\x80"},          // U+10000
            {"\xED\xAF\xBF\xED\xBF\xBF", "\xF4\x8F\xBF\xBF"},          // U+10FFFF
            {"a\xC0\x80z", "a\0z"s},
            {"\xED\xA0\xBD", "\xEF\xBF\xBD"},  // halves alone
            {"\xED\xB8\x80\xED\xA0\xBD.", "\xEF\xBF\xBD\xEF\xBF\xBD."},
            {"\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80", "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
            {"\xED", "\xED"},  // no text of a VM: nothing is read behind it
    };
    for (const auto& test : kCases) EXPECT_EQ(test.standard, standardUtf8(test.modified));
}

TEST(JniMethods, UnknownCallerThrows) {
    FakeVm java;
    FakeVm::Array frame;
    const LogCapture log;
    java.classesKnown = false;
    EXPECT_EQ(-1, nativeProcessHeicPhotoFrame(java.env(), nullptr, 0, FakeVm::asJava(&frame), nullptr, nullptr));
    EXPECT_THAT(java.thrown, ElementsAre()) << "a frame is refused without an exception";
    EXPECT_EQ(-1, nativeSetup(java.env(), nullptr));
    EXPECT_EQ(-1, nativeCreate(java.env(), nullptr, 0, 64, 64, 64, 64, FORMAT_NV21, 95, 0));
    nativeDestory(java.env(), nullptr, 0);
    const std::string unknown = "E/Can't find com/quill/media/QuillHeifWriter", exception = "java/lang/Exception: ";
    EXPECT_THAT(log.of(kTag), ElementsAre("E/Input parameter is invalid!", unknown, unknown, unknown));
    EXPECT_THAT(java.thrown, ElementsAre(exception, exception, exception));
}

}  // namespace
