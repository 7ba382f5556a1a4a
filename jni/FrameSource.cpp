#include "FrameSource.h"

#include <string.h>

#include <algorithm>

#include <android/bitmap.h>

namespace android {

PinnedFrame::~PinnedFrame() {
    if (!mCompleted.empty() && !mLate) memcpy(mArray.data(), mCompleted.data(), arrayBytes());
}

uint8_t* PinnedFrame::pixels(const FrameBytes& expected) {
    if (mArray.failed() || mArray.length() < expected.least) return nullptr;
    if (mArray.length() >= expected.whole) return mArray.data();
    complete(static_cast<size_t>(expected.whole));
    return mCompleted.data();
}

// With the samples a pair of P010 or two pairs of bytes before: of the last pixel, one of two chroma samples may lack,
// and any fixed value would colour it.
void PinnedFrame::complete(size_t wholeBytes) {
    constexpr size_t kBack = 4;
    mCompleted.resize(wholeBytes);
    memcpy(mCompleted.data(), mArray.data(), arrayBytes());
    for (size_t i = std::max(arrayBytes(), kBack); i < wholeBytes; ++i) mCompleted[i] = mCompleted[i - kBack];
}

void PinnedFrame::outliveCall() {
    mLate = true;
    mArray.outliveCall();
}

LockedBitmap::LockedBitmap(JNIEnv* env, jobject bitmap) : mBitmap(bitmap) {
    env->GetJavaVM(&mVm);
    if (AndroidBitmap_lockPixels(env, bitmap, &mPixels) != ANDROID_BITMAP_RESULT_SUCCESS) mPixels = nullptr;
}

LockedBitmap::~LockedBitmap() {
    JNIEnv* env = nullptr;
    if (mPixels == nullptr || mVm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) return;
    AndroidBitmap_unlockPixels(env, mBitmap);
    if (mLate) env->DeleteGlobalRef(mBitmap);
}

uint8_t* LockedBitmap::pixels(const FrameBytes& /* expected */) { return static_cast<uint8_t*>(mPixels); }

void LockedBitmap::outliveCall() {
    JNIEnv* env = nullptr;
    if (mPixels == nullptr || mVm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) return;
    mBitmap = env->NewGlobalRef(mBitmap);
    mLate = true;
    if (mBitmap == nullptr) mPixels = nullptr;  // as with an array: locked for good
}

}  // namespace android
