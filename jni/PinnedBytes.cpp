#include "PinnedBytes.h"

namespace android {

PinnedBytes::PinnedBytes(JNIEnv* env, jbyteArray array) : mArray(array) {
    if (array == nullptr) return;
    env->GetJavaVM(&mVm);
    mLength = env->GetArrayLength(array);
    mBytes = env->GetByteArrayElements(array, nullptr);
}

PinnedBytes::~PinnedBytes() {
    JNIEnv* env = nullptr;
    if (mBytes == nullptr || mVm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) return;
    env->ReleaseByteArrayElements(mArray, mBytes, mOutlivesCall ? JNI_ABORT : 0);
    if (mOutlivesCall) env->DeleteGlobalRef(mArray);
}

void PinnedBytes::outliveCall() {
    JNIEnv* env = nullptr;
    if (mBytes == nullptr || mVm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_4) != JNI_OK) return;
    mArray = static_cast<jbyteArray>(env->NewGlobalRef(mArray));
    mOutlivesCall = true;
    // A VM out of memory gives no reference to release by: the elements stay pinned for good, and the looper safe.
    if (mArray == nullptr) mBytes = nullptr;
}

}  // namespace android
