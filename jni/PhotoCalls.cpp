#define LOG_TAG "NativeHeifWriter"

#include "HeifWriterJni.h"

#include <fcntl.h>
#include <string.h>

#include <memory>
#include <new>
#include <string>

#include <android/bitmap.h>
#include <android/file_descriptor_jni.h>
#include <log/log.h>

#include "QuillHeifWriter.h"
#include "StandardUtf8.h"

namespace android {

namespace {

constexpr char kInvalid[] = "Input parameter is invalid!";

/** The elements of a Java byte array, pinned for a scope. An absent array gives null and a length of 0. */
class PinnedBytes {
  public:
    PinnedBytes(JNIEnv* env, jbyteArray array) : mEnv(env), mArray(array) {
        if (array == nullptr) return;
        mLength = env->GetArrayLength(array);
        if (mLength >= 0) mBytes = env->GetByteArrayElements(array, nullptr);
        mFailed = mLength < 0 || (mLength > 0 && mBytes == nullptr);
        if (mFailed) ALOGE("The VM does not hand out an array");
    }
    ~PinnedBytes() {
        if (mBytes != nullptr) mEnv->ReleaseByteArrayElements(mArray, mBytes, 0);  // with what the writer has changed
    }
    PinnedBytes(const PinnedBytes&) = delete;
    PinnedBytes& operator=(const PinnedBytes&) = delete;

    uint8_t* data() const { return reinterpret_cast<uint8_t*>(mBytes); }
    uint32_t length() const { return static_cast<uint32_t>(mLength); }
    /** True if the VM does not hand out a present array: logged, and an exception may be pending. */
    bool failed() const { return mFailed; }

  private:
    JNIEnv* const mEnv;
    const jbyteArray mArray;
    jsize mLength = 0;
    jbyte* mBytes = nullptr;
    bool mFailed = false;
};

/** A frame in a byte array. One that is short of the tail of its last chroma row only is completed in a copy. */
class PinnedFrame {
  public:
    PinnedFrame(JNIEnv* env, jbyteArray array) : mArray(env, array) {}
    ~PinnedFrame() {
        if (mCompleted != nullptr) memcpy(mArray.data(), mCompleted.get(), mArray.length());
    }
    PinnedFrame(const PinnedFrame&) = delete;
    PinnedFrame& operator=(const PinnedFrame&) = delete;

    /** Null, with a line in the log, if the array or memory for a copy cannot be had, or it is too short. */
    uint8_t* pixels(const FrameBytes& expected) {
        if (mArray.failed()) return nullptr;
        if (mArray.data() == nullptr || mArray.length() < expected.least) {
            ALOGE(kInvalid);
            return nullptr;
        }
        if (mArray.length() < expected.whole) complete(static_cast<size_t>(expected.whole));
        return mCompleted == nullptr ? mArray.data() : mCompleted.get();
    }

  private:
    // With the samples a pair of P010 or two pairs of bytes before: one chroma sample of the last pixel may be missing,
    // and any fixed value would color it.
    void complete(size_t wholeBytes) {
        constexpr size_t kBack = 4;
        mCompleted = std::make_unique<uint8_t[]>(wholeBytes);
        memcpy(mCompleted.get(), mArray.data(), mArray.length());
        for (size_t i = mArray.length(); i < wholeBytes; ++i) mCompleted[i] = i < kBack ? 0 : mCompleted[i - kBack];
    }

    PinnedBytes mArray;
    std::unique_ptr<uint8_t[]> mCompleted;
};

/** A bitmap's pixels, locked. Their size is not checked: the writer's geometry has to be the bitmap's. */
class LockedBitmap {
  public:
    LockedBitmap(JNIEnv* env, jobject bitmap) : mEnv(env), mBitmap(bitmap) {
        if (AndroidBitmap_lockPixels(env, bitmap, &mPixels) == ANDROID_BITMAP_RESULT_SUCCESS) return;
        ALOGE(kInvalid);
        mPixels = nullptr;
    }
    ~LockedBitmap() {
        if (mPixels != nullptr) AndroidBitmap_unlockPixels(mEnv, mBitmap);
    }
    LockedBitmap(const LockedBitmap&) = delete;
    LockedBitmap& operator=(const LockedBitmap&) = delete;

    /** Null, with a line in the log, if they cannot be locked. */
    uint8_t* pixels(const FrameBytes& /* expected */) { return static_cast<uint8_t*>(mPixels); }

  private:
    JNIEnv* const mEnv;
    const jobject mBitmap;
    void* mPixels = nullptr;
};

bool isWritable(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

/** The descriptors of a live photo; -1 for one that is absent. */
struct LivePhotoFiles {
    int gainmap;
    int video;
    int output;

    bool areUsable() const { return video != -1 && output != -1 && isWritable(output); }
};

LivePhotoFiles filesOf(JNIEnv* env, jobject fd, const ParsedOptions& options) {
    return {options.gainmapFd == nullptr ? -1 : AFileDescriptor_getFd(env, options.gainmapFd),
            AFileDescriptor_getFd(env, options.videoFd), AFileDescriptor_getFd(env, fd)};
}

/** False, with a line in the log, if the VM does not hand out the text; an exception may be pending then. */
bool readText(JNIEnv* env, jobject string, std::string* text) {
    const auto present = static_cast<jstring>(string);
    if (present == nullptr) return true;
    const char* const characters = env->GetStringUTFChars(present, nullptr);
    if (characters == nullptr) {  // for a very long text HotSpot does not throw
        ALOGE("The VM does not hand out the XMP text");
        return false;
    }
    const auto release = [&](const char* held) { env->ReleaseStringUTFChars(present, held); };
    const std::unique_ptr<const char, decltype(release)> held(characters, release);
    *text = standardUtf8({characters, static_cast<size_t>(env->GetStringUTFLength(present))});
    return true;
}

/** No exception goes through JNI: the one that may come is that of no memory. */
jlong outOfMemory() {
    ALOGE("No memory for the frame");
    return -1;
}

/** The common part of both live-photo methods; `picture` is what `Frame` pins or locks. */
template <typename Frame, typename Picture>
jlong writeLivePhoto(JNIEnv* env, jlong handle, Picture picture, jbyteArray exif, const ParsedOptions& options,
                     const LivePhotoFiles& files) {
    const sp<QuillHeifWriter> writer = writerOf(env, handle);
    if (writer == nullptr) return -1;
    // One after the other: where the VM has thrown, nothing more is asked of it.
    const PinnedBytes block(env, exif);
    if (block.failed()) return -1;
    const PinnedBytes extender(env, static_cast<jbyteArray>(options.fileExtender));
    if (extender.failed()) return -1;
    std::string xmp;
    if (!readText(env, options.xmpData, &xmp)) return -1;
    Frame frame(env, picture);
    uint8_t* const pixels = frame.pixels(writer->expectedFrame());
    if (pixels == nullptr) return -1;
    return writer->createLivePhoto(pixels, block.data(), block.length(), xmp.data(), static_cast<uint32_t>(xmp.size()),
                                   extender.data(), extender.length(), files.gainmap, files.video, files.output);
}

}  // namespace

jlong nativeProcessHeicPhotoFrame(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif,
                                  jobject fd) try {
    if (yuv == nullptr || env->GetObjectClass(thiz) == nullptr) {
        ALOGE(kInvalid);
        return -1;
    }
    const sp<QuillHeifWriter> writer = writerOf(env, handle);
    if (writer == nullptr) return -1;
    if (fd == nullptr) return -1;
    const int output = AFileDescriptor_getFd(env, fd);
    ALOGD("native_setup: fd %d", output);
    if (!isWritable(output)) {
        ALOGE("File descriptor is not in read-write mode or write-only mode!");
        return -1;
    }
    const PinnedBytes block(env, exif);
    if (block.failed()) return -1;
    PinnedFrame frame(env, yuv);
    uint8_t* const pixels = frame.pixels(writer->expectedFrame());
    return pixels == nullptr ? -1 : writer->processInputFrame(pixels, block.data(), block.length(), output);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

jlong nativeCreateLivePhoto(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif, jobject fd,
                            jobject options) try {
    const jclass clazz = env->GetObjectClass(thiz);
    const ParsedOptions parsed = parseOptions(env, options);
    if (fd == nullptr || yuv == nullptr || clazz == nullptr || parsed.videoFd == nullptr) return -1;
    const LivePhotoFiles files = filesOf(env, fd, parsed);
    if (!files.areUsable()) {
        ALOGE("File descriptor is not in read-write mode or write-only mode!");
        return -1;
    }
    return writeLivePhoto<PinnedFrame>(env, handle, yuv, exif, parsed, files);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

// Differs from its sibling on purpose: descriptors are refused without a log, and the bitmap is asked for its format
// without being held to it. Both are part of the interface.
jlong nativeCreateLivePhotoByBmp(JNIEnv* env, jobject thiz, jlong handle, jobject bitmap, jbyteArray exif, jobject fd,
                                 jobject options) try {
    const jclass clazz = env->GetObjectClass(thiz);
    const ParsedOptions parsed = parseOptions(env, options);
    if (fd == nullptr || bitmap == nullptr || clazz == nullptr || parsed.videoFd == nullptr) return -1;
    const LivePhotoFiles files = filesOf(env, fd, parsed);
    if (!files.areUsable()) return -1;
    AndroidBitmapInfo info;
    AndroidBitmap_getInfo(env, bitmap, &info);
    return writeLivePhoto<LockedBitmap>(env, handle, bitmap, exif, parsed, files);
} catch (const std::bad_alloc&) {
    return outOfMemory();
}

}  // namespace android
