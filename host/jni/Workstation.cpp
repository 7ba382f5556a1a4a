// Natives of com.quill.host.Workstation, found by their names.
#include <cutils/properties.h>
#include <jni.h>

#include "Clock.h"

extern "C" {

JNIEXPORT void JNICALL Java_com_quill_host_Workstation_stretchClock(JNIEnv*, jclass, jdouble factor) {
    quill::host::Clock::instance().setScale(factor);
}

JNIEXPORT jboolean JNICALL Java_com_quill_host_Workstation_setProperty(JNIEnv* env, jclass, jstring key,
                                                                       jstring value) {
    const char* const keyText = env->GetStringUTFChars(key, nullptr);
    const char* const valueText = env->GetStringUTFChars(value, nullptr);
    const bool set = keyText != nullptr && valueText != nullptr && property_set(keyText, valueText) == 0;
    if (valueText != nullptr) env->ReleaseStringUTFChars(value, valueText);
    if (keyText != nullptr) env->ReleaseStringUTFChars(key, keyText);
    return set ? JNI_TRUE : JNI_FALSE;
}

}  // extern "C"
