#pragma once

#include <string>

#include <jni.h>
#include <utils/StrongPointer.h>

namespace android {

class QuillHeifWriter;

constexpr char kWriterClass[] = "com/quill/media/QuillHeifWriter";

/**
 * What an options object holds, as local references of the calling thread in the order they are read; each null when
 * absent. Nothing is copied.
 */
struct ParsedOptions {
    jobject xmpData = nullptr;       ///< String
    jobject fileExtender = nullptr;  ///< byte[]
    jobject gainmapFd = nullptr;     ///< FileDescriptor
    jobject videoFd = nullptr;       ///< FileDescriptor
};

/** Reads `options` (may be null); checks neither types nor presence. */
ParsedOptions parseOptions(JNIEnv* env, jobject options);

/** The writer behind a Java handle, held for the length of one call. For the handle 0 null, with an exception thrown.
 */
sp<QuillHeifWriter> writerOf(JNIEnv* env, jlong handle, const char* message = "Muxer was not set up correctly");

// The native methods of com.quill.media.QuillHeifWriter. Each blocks the calling Java thread; the Java side makes one
// call at a time per handle. Results: a handle or 0, -1 on failure.
jlong nativeSetup(JNIEnv* env, jobject thiz);
jlong nativeCreate(JNIEnv* env, jobject thiz, jlong handle, jint width, jint height, jint stride, jint sliceHeight,
                   jint colorFormat, jint quality, jint rotation);
jlong nativeProcessHeicPhotoFrame(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif, jobject fd);
jlong nativeCreateLivePhoto(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif, jobject fd,
                            jobject options);
jlong nativeCreateLivePhotoByBmp(JNIEnv* env, jobject thiz, jlong handle, jobject bitmap, jbyteArray exif, jobject fd,
                                 jobject options);
void nativeDestory(JNIEnv* env, jobject thiz, jlong handle);

}  // namespace android

/**
 * Pattern for the names under which the native methods are registered, with "${method}" in place of the name; empty
 * for the names as they are. To be set before the library is loaded into a VM.
 */
extern std::string jniMethodFormat;

/** Caches the option field ids and registers the six native methods; aborts the process when either fails. */
int register_android_graphic_HeifWriter(JNIEnv* env);
