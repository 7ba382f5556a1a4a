#pragma once

#include <jni.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Results of the calls. */
enum {
    ANDROID_BITMAP_RESULT_SUCCESS = 0,
    ANDROID_BITMAP_RESULT_BAD_PARAMETER = -1,
    ANDROID_BITMAP_RESULT_JNI_EXCEPTION = -2,
    ANDROID_BITMAP_RESULT_ALLOCATION_FAILED = -3,
};

enum AndroidBitmapFormat {
    ANDROID_BITMAP_FORMAT_NONE = 0,
    ANDROID_BITMAP_FORMAT_RGBA_8888 = 1,
    ANDROID_BITMAP_FORMAT_RGB_565 = 4,
    ANDROID_BITMAP_FORMAT_RGBA_4444 = 7,
    ANDROID_BITMAP_FORMAT_A_8 = 8,
    ANDROID_BITMAP_FORMAT_RGBA_F16 = 9,
    ANDROID_BITMAP_FORMAT_RGBA_1010102 = 10,
};

enum {
    ANDROID_BITMAP_FLAGS_ALPHA_PREMUL = 0,
    ANDROID_BITMAP_FLAGS_ALPHA_OPAQUE = 1,
    ANDROID_BITMAP_FLAGS_ALPHA_UNPREMUL = 2,
    ANDROID_BITMAP_FLAGS_ALPHA_MASK = 0x3,
    ANDROID_BITMAP_FLAGS_ALPHA_SHIFT = 0,
};

typedef struct {
    uint32_t width;   ///< pixels
    uint32_t height;  ///< pixels
    uint32_t stride;  ///< bytes from one row to the next
    int32_t format;   ///< AndroidBitmapFormat
    uint32_t flags;   ///< ANDROID_BITMAP_FLAGS_*
} AndroidBitmapInfo;

/** Describes an android.graphics.Bitmap; `info` may be null to check only the object. */
int AndroidBitmap_getInfo(JNIEnv* env, jobject jbitmap, AndroidBitmapInfo* info);

/** Pins the pixels, top row first. Each success needs one `AndroidBitmap_unlockPixels`. */
int AndroidBitmap_lockPixels(JNIEnv* env, jobject jbitmap, void** addrPtr);

/** BAD_PARAMETER if the bitmap is not locked. */
int AndroidBitmap_unlockPixels(JNIEnv* env, jobject jbitmap);

#ifdef __cplusplus
}
#endif
