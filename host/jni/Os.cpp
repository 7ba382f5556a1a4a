// Natives of android.system.Os, android.system.OsConstants and android.util.Log, found by their names.
#include <android/file_descriptor_jni.h>
#include <android/log.h>
#include <fcntl.h>
#include <jni.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "Faults.h"

namespace {

using quill::host::Faults;

/** The result of `call`, or its error as a negative number. */
template <typename Call>
jlong resultOf(const char* name, Call call) {
    if (const auto status = Faults::instance().statusAt(name)) return *status;
    const int64_t result = TEMP_FAILURE_RETRY(call());
    return result < 0 ? -errno : result;
}

std::string textOf(JNIEnv* env, jstring text) {
    const char* const characters = env->GetStringUTFChars(text, nullptr);
    if (characters == nullptr) return {};
    std::string copy = characters;
    env->ReleaseStringUTFChars(text, characters);
    return copy;
}

}  // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_android_system_Os_fcntl(JNIEnv* env, jclass, jobject fd, jint command, jint argument) {
    const int number = AFileDescriptor_getFd(env, fd);
    return resultOf("Os.fcntlInt", [&] { return fcntl(number, command, argument); });
}

JNIEXPORT jlong JNICALL Java_android_system_Os_stat(JNIEnv* env, jclass, jobject fd, jlongArray fields) {
    const int number = AFileDescriptor_getFd(env, fd);
    struct stat info {};
    const jlong result = resultOf("Os.fstat", [&] { return fstat(number, &info); });
    const auto number64 = [](auto value) { return static_cast<jlong>(value); };
    const std::vector<jlong> values = {
            number64(info.st_dev),         number64(info.st_ino),         number64(info.st_mode),
            number64(info.st_nlink),       number64(info.st_uid),         number64(info.st_gid),
            number64(info.st_rdev),        number64(info.st_size),        number64(info.st_atim.tv_sec),
            number64(info.st_mtim.tv_sec), number64(info.st_ctim.tv_sec), number64(info.st_blksize),
            number64(info.st_blocks)};
    if (result == 0) env->SetLongArrayRegion(fields, 0, static_cast<jsize>(values.size()), values.data());
    return result;
}

JNIEXPORT jlong JNICALL Java_android_system_Os_seek(JNIEnv* env, jclass, jobject fd, jlong offset, jint whence) {
    const int number = AFileDescriptor_getFd(env, fd);
    return resultOf("Os.lseek", [&] { return lseek(number, offset, whence); });
}

JNIEXPORT jlong JNICALL Java_android_system_Os_read(JNIEnv* env, jclass, jobject fd, jbyteArray bytes, jint byteOffset,
                                                    jint byteCount, jlong offset) {
    const int number = AFileDescriptor_getFd(env, fd);
    std::vector<jbyte> buffer(static_cast<size_t>(byteCount));
    const jlong count = resultOf("Os.pread", [&] { return pread(number, buffer.data(), buffer.size(), offset); });
    if (count > 0) env->SetByteArrayRegion(bytes, byteOffset, static_cast<jsize>(count), buffer.data());
    return count;
}

JNIEXPORT jstring JNICALL Java_android_system_Os_strerror(JNIEnv* env, jclass, jint error) {
    return env->NewStringUTF(strerrordesc_np(error));
}

JNIEXPORT jstring JNICALL Java_android_system_OsConstants_errnoName(JNIEnv* env, jclass, jint error) {
    return env->NewStringUTF(strerrorname_np(error));
}

JNIEXPORT jint JNICALL Java_android_util_Log_println(JNIEnv* env, jclass, jint priority, jstring tag, jstring message) {
    return __android_log_write(priority, textOf(env, tag).c_str(), textOf(env, message).c_str());
}

}  // extern "C"
