#define LOG_TAG "QuillPlatform"
#include <android/file_descriptor_jni.h>

#include <log/log.h>

#include "Faults.h"
#include "JniReference.h"

namespace {

using quill::host::Faults;
using quill::host::LocalReference;

const char kClassName[] = "java/io/FileDescriptor";
constexpr int kInvalidFd = -1;

/** The private field that holds the number. Aborts if `object` is of another class. */
jfieldID descriptorField(JNIEnv* env, jobject object) {
    const LocalReference<jclass> type(env, env->FindClass(kClassName));
    LOG_ALWAYS_FATAL_IF(!type || !env->IsInstanceOf(object, type.get()), "The object is not a %s", kClassName);
    const jfieldID field = env->GetFieldID(type.get(), "fd", "I");
    LOG_ALWAYS_FATAL_IF(field == nullptr, "%s has no field fd", kClassName);
    return field;
}

}  // namespace

int AFileDescriptor_getFd(JNIEnv* env, jobject fileDescriptor) {
    if (const auto status = Faults::instance().statusAt("AFileDescriptor_getFd")) return *status;
    if (fileDescriptor == nullptr) return kInvalidFd;
    return env->GetIntField(fileDescriptor, descriptorField(env, fileDescriptor));
}
