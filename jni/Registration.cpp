#define LOG_TAG "NativeHeifWriter"

#include "HeifWriterJni.h"

#include <string.h>

#include <array>

#include <android/log.h>
#include <log/log.h>
#include <nativehelper/JNIHelp.h>

std::string jniMethodFormat;

// Set once at registration, read from any thread afterwards.
jfieldID gOptions_xmpDataID;
jfieldID gOptions_fileExtenderID;
jfieldID gOptions_gainmapFdID;
jfieldID gOptions_videoFdID;

namespace {

using namespace android;

constexpr char kOptionsClass[] = "com/quill/media/QuillHeifWriter$Options";
constexpr struct {
    jfieldID* id;
    const char* name;
    const char* signature;
} kOptionFields[] = {
        {&gOptions_xmpDataID, "xmpData", "Ljava/lang/String;"},
        {&gOptions_fileExtenderID, "fileExtender", "[B"},
        {&gOptions_gainmapFdID, "gainmapFd", "Ljava/io/FileDescriptor;"},
        {&gOptions_videoFdID, "videoFd", "Ljava/io/FileDescriptor;"},
};

const JNINativeMethod kNativeMethods[] = {
        {"nativeSetup", "()J", reinterpret_cast<void*>(nativeSetup)},
        {"nativeCreate", "(JIIIIIII)J", reinterpret_cast<void*>(nativeCreate)},
        {"nativeProcessHeicPhotoFrame", "(J[B[BLjava/io/FileDescriptor;)J",
         reinterpret_cast<void*>(nativeProcessHeicPhotoFrame)},
        {"nativeCreateLivePhoto", "(J[B[BLjava/io/FileDescriptor;Lcom/quill/media/QuillHeifWriter$Options;)J",
         reinterpret_cast<void*>(nativeCreateLivePhoto)},
        {"nativeCreateLivePhotoByBmp",
         "(JLandroid/graphics/Bitmap;[BLjava/io/FileDescriptor;Lcom/quill/media/QuillHeifWriter$Options;)J",
         reinterpret_cast<void*>(nativeCreateLivePhotoByBmp)},
        // Spelled as the Java class declares it.
        {"nativeDestory", "(J)V", reinterpret_cast<void*>(nativeDestory)},
};
constexpr size_t kMethodCount = sizeof(kNativeMethods) / sizeof(kNativeMethods[0]);

constexpr char kPlaceholder[] = "${method}";

void cacheOptionFields(JNIEnv* env) {
    const jclass clazz = env->FindClass(kOptionsClass);
    if (clazz == nullptr) __android_log_assert("clazz == NULL", LOG_TAG, "Unable to find class %s", kOptionsClass);
    for (const auto& field : kOptionFields) {
        const jfieldID res = env->GetFieldID(clazz, field.name, field.signature);
        if (res == nullptr) {
            __android_log_assert("res == NULL", LOG_TAG, "Unable to find field %s with signature %s", field.name,
                                 field.signature);
        }
        *field.id = res;
    }
    env->DeleteLocalRef(clazz);
}

int registerMethods(JNIEnv* env, const JNINativeMethod* methods) {
    const int res = jniRegisterNativeMethods(env, kWriterClass, methods, kMethodCount);
    if (res < 0) __android_log_assert("res < 0", LOG_TAG, "Unable to register native methods.");
    return res;
}

std::string applyMethodFormat(const char* name) {
    const size_t methodNamePos = jniMethodFormat.find(kPlaceholder);
    if (methodNamePos == std::string::npos) {
        __android_log_assert("methodNamePos == std::string::npos", LOG_TAG,
                             "Invalid jniMethodFormat: could not find '${method}' in pattern");
    }
    std::string made = jniMethodFormat;
    return made.replace(methodNamePos, strlen(kPlaceholder), name);
}

}  // namespace

int register_android_graphic_HeifWriter(JNIEnv* env) {
    cacheOptionFields(env);
    if (jniMethodFormat.empty()) return registerMethods(env, kNativeMethods);

    std::array<std::string, kMethodCount> names;
    std::array<JNINativeMethod, kMethodCount> methods;
    for (size_t i = 0; i < kMethodCount; ++i) {
        names[i] = applyMethodFormat(kNativeMethods[i].name);
        methods[i] = {names[i].c_str(), kNativeMethods[i].signature, kNativeMethods[i].fnPtr};
    }
    return registerMethods(env, methods.data());
}

namespace android {

ParsedOptions parseOptions(JNIEnv* env, jobject options) {
    ParsedOptions parsed;
    if (options == nullptr) return parsed;
    parsed.xmpData = env->GetObjectField(options, gOptions_xmpDataID);
    parsed.fileExtender = env->GetObjectField(options, gOptions_fileExtenderID);
    parsed.gainmapFd = env->GetObjectField(options, gOptions_gainmapFdID);
    parsed.videoFd = env->GetObjectField(options, gOptions_videoFdID);
    return parsed;
}

}  // namespace android

extern "C" JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void* /* reserved */) {
    JNIEnv* env = nullptr;
    if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) {
        ALOGE("ERROR: GetEnv failed\n");
        return -1;
    }
    register_android_graphic_HeifWriter(env);
    return JNI_VERSION_1_4;
}
