#define LOG_TAG "QuillPlatform"
#include <android/file_descriptor_jni.h>

#include <log/log.h>

#include "Faults.h"
#include "JniReference.h"

namespace {

using quill::host::Faults;
using ClassReference = quill::host::LocalReference<jclass>;

const char kClassName[] = "java/io/FileDescriptor";
constexpr int kInvalidFd = -1;

/** The private field that holds the number. Aborts when `object` is of another class. */
jfieldID descriptorField(JNIEnv* env, jobject object) {
    const ClassReference type(env, env->FindClass(kClassName));
    LOG_ALWAYS_FATAL_IF(!type || !env->IsInstanceOf(object, type.get()), "the object is not a %s", kClassName);
    const jfieldID field = env->GetFieldID(type.get(), "fd", "I");
    LOG_ALWAYS_FATAL_IF(field == nullptr, "%s has no field fd", kClassName);
    return field;
}

}  // namespace

jobject AFileDescriptor_create(JNIEnv* env) {
    if (Faults::instance().at("AFileDescriptor_create")) return nullptr;
    const ClassReference type(env, env->FindClass(kClassName));
    if (!type) return nullptr;
    const jmethodID constructor = env->GetMethodID(type.get(), "<init>", "()V");
    return constructor == nullptr ? nullptr : env->NewObject(type.get(), constructor);
}

int AFileDescriptor_getFd(JNIEnv* env, jobject fileDescriptor) {
    if (const auto status = Faults::instance().statusAt("AFileDescriptor_getFd")) return *status;
    if (fileDescriptor == nullptr) return kInvalidFd;
    return env->GetIntField(fileDescriptor, descriptorField(env, fileDescriptor));
}

void AFileDescriptor_setFd(JNIEnv* env, jobject fileDescriptor, int fd) {
    LOG_ALWAYS_FATAL_IF(fileDescriptor == nullptr, "the object is null, not a %s", kClassName);
    env->SetIntField(fileDescriptor, descriptorField(env, fileDescriptor), fd);
}
