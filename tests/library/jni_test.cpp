// The Java layer over a VM made by hand: registration, options, and what the entry points check and throw.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <android/log.h>

#include "HeifWriterJni.h"
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

std::vector<std::string> namesOf(const std::vector<FakeVm::Method>& methods) {
    std::vector<std::string> names;
    names.reserve(methods.size());
    for (const FakeVm::Method& method : methods) names.push_back(method.name);
    return names;
}

/** Loads the library with its last words on standard error. */
void loadAloud(FakeVm& java) {
    __android_log_set_aborter([](const char* message) {
        fprintf(stderr, "%s\n", message);
        abort();
    });
    JNI_OnLoad(java.vm(), nullptr);
}

TEST(JniRegistration, SixMethodsInOrder) {
    FakeVm java;
    EXPECT_EQ(0x00010004, JNI_OnLoad(java.vm(), nullptr));
    EXPECT_EQ("com/quill/media/QuillHeifWriter", java.registeredClass);
    const std::pair<const char*, const char*> kMethods[] = {
            {"nativeSetup", "()J"},
            {"nativeCreate", "(JIIIIIII)J"},
            {"nativeProcessHeicPhotoFrame", "(J[B[BLjava/io/FileDescriptor;)J"},
            {"nativeCreateLivePhoto", "(J[B[BLjava/io/FileDescriptor;Lcom/quill/media/QuillHeifWriter$Options;)J"},
            {"nativeCreateLivePhotoByBmp",
             "(JLandroid/graphics/Bitmap;[BLjava/io/FileDescriptor;Lcom/quill/media/QuillHeifWriter$Options;)J"},
            {"nativeDestory", "(J)V"},
    };
    ASSERT_EQ(std::size(kMethods), java.registered.size());
    for (size_t i = 0; i < java.registered.size(); ++i) {
        EXPECT_EQ(kMethods[i].first, java.registered[i].name);
        EXPECT_EQ(kMethods[i].second, java.registered[i].signature);
    }
    EXPECT_EQ(reinterpret_cast<void*>(nativeSetup), java.registered.front().entry);
    EXPECT_EQ(reinterpret_cast<void*>(nativeDestory), java.registered.back().entry);
    const std::string options = "com/quill/media/QuillHeifWriter$Options ";
    EXPECT_THAT(java.fields, ElementsAre(options + "xmpData Ljava/lang/String;", options + "fileExtender [B",
                                         options + "gainmapFd Ljava/io/FileDescriptor;",
                                         options + "videoFd Ljava/io/FileDescriptor;"));
}

TEST(JniRegistration, PatternShapesTheNames) {
    for (const auto& [pattern, first, last] :
         {std::tuple("pre_${method}_post", "pre_nativeSetup_post", "pre_nativeDestory_post"),
          std::tuple("$$${method}${method}", "$$nativeSetup${method}", "$$nativeDestory${method}"),
          std::tuple("${method}", "nativeSetup", "nativeDestory")}) {
        FakeVm java;
        jniMethodFormat = pattern;
        EXPECT_EQ(JNI_VERSION_1_4, JNI_OnLoad(java.vm(), nullptr));
        const std::vector<std::string> names = namesOf(java.registered);
        ASSERT_EQ(6u, names.size());
        EXPECT_EQ(first, names.front());
        EXPECT_EQ(last, names.back());
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

TEST(JniOptions, FieldsAreReadByName) {
    FakeVm java;
    JNI_OnLoad(java.vm(), nullptr);
    FakeVm::Object xmp, extender, gainmap, video, options;
    options.fields = {{"xmpData", FakeVm::asJava(&xmp)},
                      {"fileExtender", FakeVm::asJava(&extender)},
                      {"gainmapFd", FakeVm::asJava(&gainmap)},
                      {"videoFd", FakeVm::asJava(&video)}};
    const ParsedOptions all = parseOptions(java.env(), FakeVm::asJava(&options));
    EXPECT_EQ(FakeVm::asJava(&xmp), all.xmpData);
    EXPECT_EQ(FakeVm::asJava(&extender), all.fileExtender);
    EXPECT_EQ(FakeVm::asJava(&gainmap), all.gainmapFd);
    EXPECT_EQ(FakeVm::asJava(&video), all.videoFd);
    const ParsedOptions none = parseOptions(java.env(), nullptr);
    EXPECT_TRUE(!none.xmpData && !none.fileExtender && !none.gainmapFd && !none.videoFd);
}

constexpr Geometry kSmall{64, 64, 64, 64};

/** A Java writer object and its calls. */
struct JavaWriter {
    JavaWriter() {
        setProperties("debug.quill.video.log.enable=0,debug.quill.host.x265.preset=ultrafast");
        const CameraFrame shot = makeFrame(FORMAT_NV21, kSmall);
        frame.bytes.assign(shot.bytes.begin(), shot.bytes.end());
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

FakeVm::Object descriptor(int fd) {
    FakeVm::Object object;
    object.fd = fd;
    return object;
}

TEST(JniMethods, StillLetsGoOfItsArrayItsWriterAndItsDescriptor) {
    const LogCapture log;
    JavaWriter writer;
    EXPECT_EQ(0, writer.create());
    const TemporaryFile file;
    FakeVm::Object fd = descriptor(file.fd());
    EXPECT_EQ(0, writer.process(&fd));
    writer.destroy();
    EXPECT_EQ(0, writer.frame.pins);
    EXPECT_EQ(0, writer.frame.releaseMode) << "the chroma swap is copied back";
    EXPECT_THAT(log.of(kTag), ElementsAre("I/quality:95", "D/native_setup: fd " + std::to_string(file.fd())));
    EXPECT_TRUE(log.has("D/QuillHeifWriter: ~QuillHeifWriter()")) << "the Java object's reference was the last";
    EXPECT_THAT(writer.java.thrown, testing::IsEmpty());
    EXPECT_NE(-1, fcntl(file.fd(), F_GETFD)) << "the descriptor stays the caller's";
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
