#pragma once

#include <jni.h>

#ifdef __cplusplus
extern "C" {
#endif

/** An invalid java.io.FileDescriptor; a local reference. Null with an exception pending when out of memory. */
jobject AFileDescriptor_create(JNIEnv* env);

/** -1 when the object is invalid or null. Aborts when it is not a java.io.FileDescriptor. */
int AFileDescriptor_getFd(JNIEnv* env, jobject fileDescriptor);

/** `fd` stays the caller's. Aborts when the object is not a java.io.FileDescriptor. */
void AFileDescriptor_setFd(JNIEnv* env, jobject fileDescriptor, int fd);

#ifdef __cplusplus
}
#endif
