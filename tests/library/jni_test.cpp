// The Java layer over a VM made by hand: registration, options, and what the entry points check and throw.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <android/log.h>

#include "HeifWriterJni.h"
#include "StandardUtf8.h"
#include "support/App.h"
#include "support/CameraFrames.h"
#include "support/FakeVm.h"
#include "support/LogCapture.h"
#include "support/TemporaryFiles.h"
#include "support/TestDevice.h"

namespace {

using namespace android;
using namespace quill::test;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kTag[] = "NativeHeifWriter";

/** Loads the library with its last words on standard error. */
void loadAloud(FakeVm& java) {
    __android_log_set_aborter([](const char* message) {
        fprintf(stderr, "%s\n", message);
        abort();
    });
    JNI_OnLoad(java.vm(), nullptr);
}

TEST(JniRegistration, PatternShapesTheNames) {
    for (const auto& [pattern, before, behind] : {std::tuple("${method}", "", ""),
                                                  {"pre_${method}_post", "pre_", "_post"},
                                                  {"$$${method}${method}", "$$", "${method}"}}) {
        FakeVm java;
        jniMethodFormat = pattern;
        EXPECT_EQ(0x00010004, JNI_OnLoad(java.vm(), nullptr));
        EXPECT_EQ("com/quill/media/QuillHeifWriter", java.registeredClass);
        std::vector<std::string> expected;
        for (const std::string name : {"nativeSetup", "nativeCreate", "nativeProcessHeicPhotoFrame",
                                       "nativeCreateLivePhoto", "nativeCreateLivePhotoByBmp", "nativeDestory"}) {
            expected.push_back(before + name + behind);
        }
        EXPECT_EQ(expected, java.registered);
    }
}

TEST(JniRegistrationDeathTest, PatternWithoutPlaceholderAborts) {
    for (const char* const pattern : {"native_", "$", "${metho}", "$${method", "a longer pattern with a $ in it"}) {
        FakeVm java;
        jniMethodFormat = pattern;
        EXPECT_DEATH(loadAloud(java), HasSubstr("Invalid jniMethodFormat: could not find '${method}' in pattern"))
                << pattern;
    }
}

TEST(JniRegistrationDeathTest, WhatIsMissingIsNamed) {
    FakeVm java;
    java.missing = {"com/quill/media/QuillHeifWriter$Options"};
    EXPECT_DEATH(loadAloud(java), HasSubstr("Unable to find class com/quill/media/QuillHeifWriter$Options"));
    java.missing = {"gainmapFd"};
    EXPECT_DEATH(loadAloud(java), HasSubstr("Unable to find field gainmapFd with signature Ljava/io/FileDescriptor;"));
    java.missing = {"com/quill/media/QuillHeifWriter"};
    EXPECT_DEATH(loadAloud(java), HasSubstr("com/quill/media/QuillHeifWriter"));
    java.missing = {};
    java.registerResult = -1;
    EXPECT_DEATH(loadAloud(java), "RegisterNatives|Unable to register native methods");
}

TEST(JniRegistration, DetachedThreadIsAnError) {
    const LogCapture log;
    FakeVm java;
    java.attached = false;
    EXPECT_EQ(-1, JNI_OnLoad(java.vm(), nullptr));
    EXPECT_THAT(log.of(kTag), ElementsAre("E/ERROR: GetEnv failed\n"));
    EXPECT_TRUE(java.registered.empty());
}

constexpr Geometry kSmall{64, 64, 64, 64};

/** A Java writer object and its calls. */
struct JavaWriter {
    JavaWriter() {
        setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
        const CameraFrame shot = makeFrame(FORMAT_NV21, kSmall);
        frame.assign(shot.bytes);
        handle = nativeSetup(java.env(), FakeVm::asJava(&self));
    }
    jlong create() {
        return nativeCreate(java.env(), FakeVm::asJava(&self), handle, 64, 64, 64, 64, FORMAT_NV21, 95, 0);
    }
    jlong process(FakeVm::Object* fd) {
        return nativeProcessHeicPhotoFrame(java.env(), FakeVm::asJava(&self), handle, FakeVm::asJava(&frame),
                                           FakeVm::asJava(&exif), fd == nullptr ? nullptr : FakeVm::asJava(fd));
    }
    void destroy() { nativeDestory(java.env(), FakeVm::asJava(&self), handle); }

    FakeVm java;
    FakeVm::Object self;
    FakeVm::Array frame, exif;
    jlong handle;
};

TEST(JniMethods, StillIsLoggedAndKeepsTheDescriptorOpen) {
    const LogCapture log;
    JavaWriter writer;
    EXPECT_EQ(0, writer.create());
    EXPECT_EQ(-1, writer.process(nullptr));
    EXPECT_THAT(log.of(kTag), ElementsAre("I/quality:95")) << "nothing is said of no descriptor";
    const TemporaryFile file;
    FakeVm::Object fd;
    fd.fd = open(file.path().c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(0, writer.process(&fd));
    writer.destroy();
    EXPECT_THAT(log.of(kTag), ElementsAre("I/quality:95", "D/native_setup: fd " + std::to_string(fd.fd)));
    EXPECT_TRUE(log.has("D/QuillHeifWriter: ~QuillHeifWriter()")) << "the Java object's reference was the last";
    EXPECT_EQ(0, close(fd.fd)) << "the descriptor stays the caller's";
}

TEST(JniMethods, ReadOnlyOutputIsLoggedForAnArrayButNotForABitmap) {
    FakeVm java;
    JNI_OnLoad(java.vm(), nullptr);
    const TemporaryFile file;
    FakeVm::Object object, options, video, output;
    FakeVm::Array frame;
    video.fd = file.fd();
    options.fields["videoFd"] = FakeVm::asJava(&video);
    output.fd = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    const auto write = [&](auto method, auto picture) {
        return method(java.env(), FakeVm::asJava(&object), 0, picture, nullptr, FakeVm::asJava(&output),
                      FakeVm::asJava(&options));
    };
    const LogCapture log;
    EXPECT_EQ(-1, write(nativeCreateLivePhotoByBmp, FakeVm::asJava(&object)));
    EXPECT_THAT(log.lines(), ElementsAre());
    EXPECT_EQ(-1, write(nativeCreateLivePhoto, FakeVm::asJava(&frame)));
    EXPECT_THAT(log.lines(), ElementsAre("E/NativeHeifWriter: File descriptor is not in read-write mode or write-only "
                                         "mode!"));
    EXPECT_THAT(java.thrown, ElementsAre()) << "before the handle is looked at";
    close(output.fd);
}

TEST(JniMethods, GainMapMayBeAbsent) {
    App app({"live", "", FORMAT_NV12, true, false, 64});
    app.options.fields.erase("gainmapFd");
    app.setUp();
    EXPECT_EQ(0, app.write());
    EXPECT_EQ(" still mpvd qext", app.fileText());
    app.destroy();
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
    JavaWriter writer;
    const LogCapture log;
    writer.java.classesKnown = false;
    EXPECT_EQ(-1, writer.process(nullptr));
    EXPECT_THAT(writer.java.thrown, testing::IsEmpty()) << "a frame is refused without an exception";
    EXPECT_EQ(-1, nativeSetup(writer.java.env(), FakeVm::asJava(&writer.self)));
    EXPECT_EQ(-1, writer.create());
    writer.destroy();
    const std::string unknown = "E/Can't find com/quill/media/QuillHeifWriter";
    EXPECT_THAT(log.of(kTag), ElementsAre("E/Input parameter is invalid!", unknown, unknown, unknown));
    EXPECT_THAT(writer.java.thrown,
                ElementsAre("java/lang/Exception: ", "java/lang/Exception: ", "java/lang/Exception: "));
    writer.java.classesKnown = true;
    writer.destroy();
}

}  // namespace
