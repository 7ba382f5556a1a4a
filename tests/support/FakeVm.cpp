#include "support/FakeVm.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <optional>

#include <android/bitmap.h>

#include "Faults.h"

namespace quill::test {

namespace {

using quill::host::Fault;
using quill::host::Faults;

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

/** Null, with an exception pending if the fault has a status, when a test says so. */
bool isRefused(const char* call) {
    const std::optional<Fault> fault = Faults::instance().at(call);
    if (fault && fault->kind == Fault::Kind::kStatus) current->exceptionPending = true;
    return fault.has_value();
}

jbyte* getElements(JNIEnv*, jbyteArray array, jboolean*) {
    return isRefused("GetByteArrayElements") ? nullptr : arrayOf(array).pin();
}

jsize getArrayLength(JNIEnv*, jarray array) { return static_cast<jsize>(arrayOf(array).size()); }

/** A bitmap's pixels stay pinned as long as the reference that a lock holds. */
std::set<jobject> pixelBuffers;

void* getDirectBufferAddress(JNIEnv*, jobject buffer) {
    pixelBuffers.insert(buffer);
    return arrayOf(static_cast<jarray>(buffer)).pin();
}

void deleteGlobalRef(JNIEnv*, jobject object) {
    if (pixelBuffers.count(object) != 0) arrayOf(static_cast<jarray>(object)).unpin();
}

jint getIntField(JNIEnv*, jobject object, jfieldID field) {
    const std::string& name = nameOf(field);
    if (name == "fd") return objectOf(object).fd;
    return static_cast<FakeVm::Bitmap&>(objectOf(object)).numbers[name];
}

const char* getStringChars(JNIEnv*, jstring text, jboolean*) {
    if (isRefused("GetStringUTFChars")) return nullptr;
    ++current->texts;
    return reinterpret_cast<FakeVm::Text*>(text)->c_str();
}

jsize getStringLength(JNIEnv*, jstring text) {
    return static_cast<jsize>(reinterpret_cast<FakeVm::Text*>(text)->size());
}

jint getEnv(JavaVM*, void** env, jint version) {
    if (!current->attached || version != JNI_VERSION_1_4) return JNI_EDETACHED;
    *env = current->env();
    return JNI_OK;
}

jobject getObjectField(JNIEnv*, jobject object, jfieldID field) { return objectOf(object).fields[nameOf(field)]; }

jclass getObjectClass(JNIEnv*, jobject) { return current->classesKnown ? named<jclass>("Caller") : nullptr; }

/** `kFunction`, and whether it may be called at this moment. */
template <auto kFunction, typename Result, typename... Args>
Result whileNothingIsThrown(JNIEnv* env, Args... args) {
    if (current->exceptionPending) ++current->callsAfterAnException;
    return kFunction(env, args...);
}

template <auto kFunction, typename Result, typename... Args>
void enter(Result (*&entry)(JNIEnv*, Args...)) {
    entry = whileNothingIsThrown<kFunction, Result, Args...>;
}

}  // namespace

void FakeVm::Array::assign(const std::vector<uint8_t>& bytes) {
    mMemory = std::make_unique<GuardedMemory>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), pin());
    unpin();
}

std::vector<uint8_t> FakeVm::Array::bytes() {
    const int8_t* const data = pin();
    std::vector<uint8_t> copy(data, data + size());
    unpin();
    return copy;
}

void FakeVm::Array::fill(uint8_t value) {
    std::fill_n(pin(), size(), static_cast<int8_t>(value));
    unpin();
}

int8_t* FakeVm::Array::pin() {
    if (mMemory == nullptr) mMemory = std::make_unique<GuardedMemory>(0);
    if (++mPins == 1) mMemory->open();
    return mMemory->data();
}

void FakeVm::Array::unpin() {
    if (--mPins == 0) mMemory->shut();
}

FakeVm::Bitmap::Bitmap(int width, int height, const std::vector<uint8_t>& rgba)
        : numbers{{"mWidth", width}, {"mHeight", height}, {"mFormat", ANDROID_BITMAP_FORMAT_RGBA_8888}} {
    pixels.assign(rgba);
    fields["mPixels"] = asJava(&pixels);
}

FakeVm::FakeVm() {
    current = this;
    mInvokeTable.GetEnv = getEnv;
    mEnv.functions = &mTable;
    mVm.functions = &mInvokeTable;
    mTable.FindClass = [](JNIEnv*, const char* name) { return findNamed<jclass>(name); };
    mTable.GetFieldID = [](JNIEnv*, jclass, const char* name, const char*) { return findNamed<jfieldID>(name); };
    mTable.RegisterNatives = registerNatives;
    mTable.ThrowNew = throwNew;
    mTable.FatalError = fatalError;
    mTable.DeleteLocalRef = [](JNIEnv*, jobject) {};
    mTable.NewGlobalRef = [](JNIEnv*, jobject object) { return object; };
    mTable.DeleteGlobalRef = deleteGlobalRef;
    mTable.IsSameObject = [](JNIEnv*, jobject one, jobject other) -> jboolean { return one == other; };
    mTable.ExceptionCheck = [](JNIEnv*) -> jboolean { return current->exceptionPending; };
    mTable.IsInstanceOf = [](JNIEnv*, jobject, jclass) -> jboolean { return JNI_TRUE; };
    mTable.ReleaseStringUTFChars = [](JNIEnv*, jstring, const char*) { --current->texts; };
    mTable.GetDirectBufferCapacity = [](JNIEnv*, jobject buffer) {
        return static_cast<jlong>(arrayOf(static_cast<jarray>(buffer)).size());
    };
    mTable.ReleaseByteArrayElements = [](JNIEnv*, jbyteArray array, jbyte*, jint) { arrayOf(array).unpin(); };
    enter<getObjectClass>(mTable.GetObjectClass);
    enter<getObjectField>(mTable.GetObjectField);
    enter<getIntField>(mTable.GetIntField);
    enter<getStringChars>(mTable.GetStringUTFChars);
    enter<getStringLength>(mTable.GetStringUTFLength);
    enter<getDirectBufferAddress>(mTable.GetDirectBufferAddress);
    enter<getArrayLength>(mTable.GetArrayLength);
    enter<getElements>(mTable.GetByteArrayElements);
}

}  // namespace quill::test
