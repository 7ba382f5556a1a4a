#include "support/FakeVm.h"

#include <stdio.h>
#include <stdlib.h>

#include <android/bitmap.h>

namespace quill::test {

namespace {

FakeVm* current = nullptr;

/** Classes and field ids are pointers to their names, which live as long as the process. */
template <typename Handle>
Handle named(const std::string& name) {
    static std::set<std::string>* const names = new std::set<std::string>;
    return reinterpret_cast<Handle>(const_cast<std::string*>(&*names->insert(name).first));
}

template <typename Handle>
const std::string& nameOf(Handle handle) {
    return *reinterpret_cast<const std::string*>(handle);
}

template <typename Handle>
Handle findNamed(const std::string& name) {
    return current->missing.count(name) != 0 ? nullptr : named<Handle>(name);
}

FakeVm::Array& arrayOf(jarray array) { return *reinterpret_cast<FakeVm::Array*>(array); }
FakeVm::Object& objectOf(jobject object) { return *reinterpret_cast<FakeVm::Object*>(object); }

jint registerNatives(JNIEnv*, jclass clazz, const JNINativeMethod* methods, jint count) {
    current->registeredClass = nameOf(clazz);
    for (jint i = 0; i < count; ++i) current->registered.push_back(methods[i].name);
    return current->registerResult;
}

jint throwNew(JNIEnv*, jclass clazz, const char* message) {
    current->thrown.push_back(nameOf(clazz) + ": " + (message == nullptr ? "" : message));
    return JNI_OK;
}

void fatalError(JNIEnv*, const char* message) {
    fprintf(stderr, "%s\n", message);
    abort();
}

jbyte* pin(FakeVm::Array& array) {
    ++array.pins;
    if (array.pinned == nullptr) array.pinned = std::make_unique<GuardedMemory>(array.bytes);
    return array.pinned->data();
}

void unpin(FakeVm::Array& array, jint mode) {
    if (mode != JNI_ABORT) array.bytes = array.pinned->bytes();
    if (--array.pins == 0) array.pinned.reset();
}

jbyte* getElements(JNIEnv*, jbyteArray array, jboolean*) { return pin(arrayOf(array)); }

void releaseElements(JNIEnv*, jbyteArray array, jbyte*, jint mode) { unpin(arrayOf(array), mode); }

/** The pixels of a bitmap are pinned by the reference that a lock holds. */
std::set<jobject>& pixelBuffers() {
    static std::set<jobject>* const known = new std::set<jobject>;
    return *known;
}

void* getDirectBufferAddress(JNIEnv*, jobject buffer) {
    pixelBuffers().insert(buffer);
    return pin(arrayOf(static_cast<jarray>(buffer)));
}

void deleteGlobalRef(JNIEnv*, jobject object) {
    if (pixelBuffers().count(object) != 0) unpin(arrayOf(static_cast<jarray>(object)), 0);
}

jint getIntField(JNIEnv*, jobject object, jfieldID field) {
    const std::string& name = nameOf(field);
    if (name == "fd") return objectOf(object).fd;
    return static_cast<FakeVm::Bitmap&>(objectOf(object)).numbers[name];
}

const char* getStringChars(JNIEnv*, jstring text, jboolean*) { return reinterpret_cast<FakeVm::Text*>(text)->c_str(); }

jsize getStringLength(JNIEnv*, jstring text) {
    return static_cast<jsize>(reinterpret_cast<FakeVm::Text*>(text)->size());
}

jint getEnv(JavaVM*, void** env, jint version) {
    if (!current->attached || version != JNI_VERSION_1_4) return JNI_EDETACHED;
    *env = current->env();
    return JNI_OK;
}

}  // namespace

FakeVm::Bitmap::Bitmap(int width, int height, const std::vector<uint8_t>& rgba)
        : numbers{{"mWidth", width}, {"mHeight", height}, {"mFormat", ANDROID_BITMAP_FORMAT_RGBA_8888}} {
    pixels.bytes.assign(rgba.begin(), rgba.end());
    fields["mPixels"] = asJava(&pixels);
}

FakeVm::FakeVm() {
    current = this;
    fillTable();
    mInvokeTable.GetEnv = getEnv;
    mEnv.functions = &mTable;
    mVm.functions = &mInvokeTable;
}

void FakeVm::fillTable() {
    mTable.FindClass = [](JNIEnv*, const char* name) { return findNamed<jclass>(name); };
    mTable.GetFieldID = [](JNIEnv*, jclass, const char* name, const char*) { return findNamed<jfieldID>(name); };
    mTable.RegisterNatives = registerNatives;
    mTable.ThrowNew = throwNew;
    mTable.FatalError = fatalError;
    mTable.DeleteLocalRef = [](JNIEnv*, jobject) {};
    mTable.NewGlobalRef = [](JNIEnv*, jobject object) { return object; };
    mTable.DeleteGlobalRef = deleteGlobalRef;
    mTable.IsSameObject = [](JNIEnv*, jobject one, jobject other) -> jboolean { return one == other; };
    mTable.GetJavaVM = [](JNIEnv*, JavaVM** vm) -> jint {
        *vm = current->vm();
        return JNI_OK;
    };
    mTable.ExceptionCheck = [](JNIEnv*) -> jboolean { return JNI_FALSE; };
    mTable.ExceptionOccurred = [](JNIEnv*) -> jthrowable { return nullptr; };
    mTable.ExceptionClear = [](JNIEnv*) {};
    mTable.GetObjectClass = [](JNIEnv*, jobject) { return current->classesKnown ? named<jclass>("Caller") : nullptr; };
    mTable.IsInstanceOf = [](JNIEnv*, jobject, jclass) -> jboolean { return JNI_TRUE; };
    mTable.GetIntField = getIntField;
    mTable.GetStringUTFChars = getStringChars;
    mTable.GetStringUTFLength = getStringLength;
    mTable.ReleaseStringUTFChars = [](JNIEnv*, jstring, const char*) {};
    mTable.GetDirectBufferAddress = getDirectBufferAddress;
    mTable.GetDirectBufferCapacity = [](JNIEnv*, jobject buffer) {
        return static_cast<jlong>(arrayOf(static_cast<jarray>(buffer)).bytes.size());
    };
    mTable.GetObjectField = [](JNIEnv*, jobject object, jfieldID field) {
        return objectOf(object).fields[nameOf(field)];
    };
    mTable.GetArrayLength = [](JNIEnv*, jarray array) { return static_cast<jsize>(arrayOf(array).bytes.size()); };
    mTable.GetByteArrayElements = getElements;
    mTable.ReleaseByteArrayElements = releaseElements;
}

}  // namespace quill::test
