#pragma once

#include <jni.h>

#ifdef __cplusplus
extern "C" {
#endif

/** -1 if the object is invalid or null. Aborts if it is not a java.io.FileDescriptor. */
int AFileDescriptor_getFd(JNIEnv* env, jobject fileDescriptor);

#ifdef __cplusplus
}
#endif
