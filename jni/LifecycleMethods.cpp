#include "JniNames.h"  // first: it names the log tag

#include "HeifWriterJni.h"

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

sp<QuillHeifWriter> writerOf(jlong handle) { return reinterpret_cast<QuillHeifWriter*>(handle); }

void throwNotSetUp(JNIEnv* env, const char* message) {
    jniThrowException(env, "java/lang/IllegalStateException", message);
}

jlong nativeSetup(JNIEnv* env, jobject thiz) {
    if (!checkCaller(env, thiz)) return -1;
    const sp<QuillHeifWriter> writer = new QuillHeifWriter;
    writer->incStrong(javaOwner());
    return reinterpret_cast<jlong>(writer.get());
}

jlong nativeCreate(JNIEnv* env, jobject thiz, jlong handle, jint width, jint height, jint stride, jint sliceHeight,
                   jint colorFormat, jint quality, jint rotation) {
    if (!checkCaller(env, thiz)) return -1;
    const sp<QuillHeifWriter> writer = writerOf(handle);
    if (writer == nullptr) {
        throwNotSetUp(env, "Writer was not set up correctly");
        return -1;
    }
    ALOGI("quality:%d", quality);
    writer->start(width, height, stride, sliceHeight, colorFormat, quality, rotation);
    writer->setCallback(nullptr);
    return 0;  // whatever the outcome: the writer keeps it and the next frame reports it
}

void nativeDestory(JNIEnv* env, jobject thiz, jlong handle) {
    if (!checkCaller(env, thiz)) return;
    const sp<QuillHeifWriter> writer = writerOf(handle);
    if (writer == nullptr) {
        throwNotSetUp(env, "Muxer was not set up correctly");
        return;
    }
    writer->close();
    writer->destroy();
    writer->decStrong(javaOwner());
}

}  // namespace android
