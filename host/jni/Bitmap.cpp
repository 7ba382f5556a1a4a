#include <android/bitmap.h>

#include <limits>
#include <mutex>
#include <vector>

#include "Faults.h"
#include "JniReference.h"

namespace {

using quill::host::Faults;
using quill::host::LocalReference;

// The workstation's class: mWidth, mHeight, mFormat and mPixels, a direct buffer without gaps between rows.
const char kClassName[] = "android/graphics/Bitmap";

struct Format {
    int32_t format;
    uint32_t bytesPerPixel;
};

constexpr Format kFormats[] = {
        {ANDROID_BITMAP_FORMAT_RGBA_8888, 4}, {ANDROID_BITMAP_FORMAT_RGB_565, 2},
        {ANDROID_BITMAP_FORMAT_RGBA_4444, 2}, {ANDROID_BITMAP_FORMAT_A_8, 1},
        {ANDROID_BITMAP_FORMAT_RGBA_F16, 8},  {ANDROID_BITMAP_FORMAT_RGBA_1010102, 4},
};

/** 0 for an unknown format. */
uint32_t bytesPerPixel(int32_t format) {
    for (const Format& known : kFormats) {
        if (known.format == format) return known.bytesPerPixel;
    }
    return 0;
}

struct Fields {
    jfieldID width;
    jfieldID height;
    jfieldID format;
    jfieldID pixels;
};

int findFields(JNIEnv* env, jobject bitmap, Fields* fields) {
    if (env == nullptr || bitmap == nullptr) return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    const LocalReference<jclass> type(env, env->FindClass(kClassName));
    if (!type) return ANDROID_BITMAP_RESULT_JNI_EXCEPTION;
    if (!env->IsInstanceOf(bitmap, type.get())) return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    fields->width = env->GetFieldID(type.get(), "mWidth", "I");
    fields->height = env->GetFieldID(type.get(), "mHeight", "I");
    fields->format = env->GetFieldID(type.get(), "mFormat", "I");
    fields->pixels = env->GetFieldID(type.get(), "mPixels", "Ljava/nio/ByteBuffer;");
    return env->ExceptionCheck() ? ANDROID_BITMAP_RESULT_JNI_EXCEPTION : ANDROID_BITMAP_RESULT_SUCCESS;
}

int readInfo(JNIEnv* env, jobject bitmap, const Fields& fields, AndroidBitmapInfo* info) {
    const jint width = env->GetIntField(bitmap, fields.width);
    const jint height = env->GetIntField(bitmap, fields.height);
    const jint format = env->GetIntField(bitmap, fields.format);
    const uint64_t stride = static_cast<uint64_t>(width) * bytesPerPixel(format);
    if (width < 1 || height < 1 || stride == 0 || stride > std::numeric_limits<uint32_t>::max()) {
        return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    }
    *info = {static_cast<uint32_t>(width), static_cast<uint32_t>(height), static_cast<uint32_t>(stride), format,
             ANDROID_BITMAP_FLAGS_ALPHA_PREMUL};
    return ANDROID_BITMAP_RESULT_SUCCESS;
}

/** One lock. The references keep bitmap and pixels alive until the unlock. */
struct Lock {
    jobject bitmap;
    jobject pixels;
};

void release(JNIEnv* env, const Lock& lock) {
    if (lock.bitmap != nullptr) env->DeleteGlobalRef(lock.bitmap);
    if (lock.pixels != nullptr) env->DeleteGlobalRef(lock.pixels);
}

struct Locks {
    std::mutex lock;
    std::vector<Lock> held;
};

Locks& locks() {
    static Locks* const kept = new Locks;  // never destroyed: threads may ask at exit
    return *kept;
}

int pin(JNIEnv* env, jobject bitmap, jobject pixels) {
    const Lock lock = {env->NewGlobalRef(bitmap), env->NewGlobalRef(pixels)};
    if (lock.bitmap == nullptr || lock.pixels == nullptr) {
        release(env, lock);
        return ANDROID_BITMAP_RESULT_ALLOCATION_FAILED;
    }
    const std::lock_guard<std::mutex> guard(locks().lock);
    locks().held.push_back(lock);
    return ANDROID_BITMAP_RESULT_SUCCESS;
}

}  // namespace

int AndroidBitmap_getInfo(JNIEnv* env, jobject jbitmap, AndroidBitmapInfo* info) {
    if (const auto status = Faults::instance().statusAt("AndroidBitmap_getInfo")) return *status;
    Fields fields;
    const int found = findFields(env, jbitmap, &fields);
    if (found != ANDROID_BITMAP_RESULT_SUCCESS || info == nullptr) return found;
    return readInfo(env, jbitmap, fields, info);
}

int AndroidBitmap_lockPixels(JNIEnv* env, jobject jbitmap, void** addrPtr) {
    if (const auto status = Faults::instance().statusAt("AndroidBitmap_lockPixels")) return *status;
    Fields fields;
    AndroidBitmapInfo info;
    int result = findFields(env, jbitmap, &fields);
    if (result == ANDROID_BITMAP_RESULT_SUCCESS) result = readInfo(env, jbitmap, fields, &info);
    if (result != ANDROID_BITMAP_RESULT_SUCCESS) return result;

    const LocalReference<jobject> pixels(env, env->GetObjectField(jbitmap, fields.pixels));
    void* const address = pixels ? env->GetDirectBufferAddress(pixels.get()) : nullptr;
    if (address == nullptr) return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    const uint64_t needed = uint64_t{info.stride} * info.height;
    if (static_cast<uint64_t>(env->GetDirectBufferCapacity(pixels.get())) < needed) {
        return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    }
    result = pin(env, jbitmap, pixels.get());
    if (result == ANDROID_BITMAP_RESULT_SUCCESS && addrPtr != nullptr) *addrPtr = address;
    return result;
}

int AndroidBitmap_unlockPixels(JNIEnv* env, jobject jbitmap) {
    if (const auto status = Faults::instance().statusAt("AndroidBitmap_unlockPixels")) return *status;
    if (env == nullptr || jbitmap == nullptr) return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    Lock unlocked = {};
    {
        std::vector<Lock>& held = locks().held;
        const std::lock_guard<std::mutex> guard(locks().lock);
        for (size_t i = held.size(); i-- > 0 && unlocked.bitmap == nullptr;) {
            if (!env->IsSameObject(held[i].bitmap, jbitmap)) continue;
            unlocked = held[i];
            held.erase(held.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    if (unlocked.bitmap == nullptr) return ANDROID_BITMAP_RESULT_BAD_PARAMETER;
    release(env, unlocked);
    return ANDROID_BITMAP_RESULT_SUCCESS;
}
