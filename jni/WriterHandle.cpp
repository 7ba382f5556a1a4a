#define LOG_TAG "NativeHeifWriter"

#include "HeifWriterJni.h"

#include <new>

#include <log/log.h>
#include <nativehelper/JNIHelp.h>

#include "QuillHeifWriter.h"

namespace android {

namespace {

/** Identifies the Java object's own reference on its writer. */
const void* javaOwner() { return reinterpret_cast<const void*>(nativeSetup); }

/** False, with a Java exception pending, when the class of the calling object cannot be had. */
bool checkCaller(JNIEnv* env, jobject thiz) {
    if (env->GetObjectClass(thiz) != nullptr) return true;
    ALOGE("Can't find %s", kWriterClass);
    jniThrowException(env, "java/lang/Exception", nullptr);
    return false;
}

}  // namespace

sp<QuillHeifWriter> writerOf(JNIEnv* env, jlong handle, const char* message) {
    if (handle == 0) jniThrowException(env, "java/lang/IllegalStateException", message);
    return reinterpret_cast<QuillHeifWriter*>(handle);
}

jlong nativeSetup(JNIEnv* env, jobject thiz) {
    if (!checkCaller(env, thiz)) return -1;
    try {
        const sp<QuillHeifWriter> writer = new QuillHeifWriter;
        writer->incStrong(javaOwner());
        return reinterpret_cast<jlong>(writer.get());
    } catch (const std::bad_alloc&) {
        ALOGE("No memory for a writer");
        return -1;
    }
}

jlong nativeCreate(JNIEnv* env, jobject thiz, jlong handle, jint width, jint height, jint stride, jint sliceHeight,
                   jint colorFormat, jint quality, jint rotation) {
    if (!checkCaller(env, thiz)) return -1;
    const sp<QuillHeifWriter> writer = writerOf(env, handle, "Writer was not set up correctly");
    if (writer == nullptr) return -1;
    ALOGI("quality:%d", quality);
    try {
        writer->start(width, height, stride, sliceHeight, colorFormat, quality, rotation);
    } catch (const std::bad_alloc&) {
        ALOGE("No memory for an encoder");
    }
    writer->setCallback(nullptr);
    return 0;  // whatever the outcome: the writer keeps it and the next frame reports it
}

void nativeDestory(JNIEnv* env, jobject thiz, jlong handle) {
    if (!checkCaller(env, thiz)) return;
    const sp<QuillHeifWriter> writer = writerOf(env, handle);
    if (writer == nullptr) return;
    writer->close();
    writer->destroy();
    writer->decStrong(javaOwner());
}

}  // namespace android
