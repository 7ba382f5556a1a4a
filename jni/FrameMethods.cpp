#include "JniNames.h"  // first: it names the log tag

#include "HeifWriterJni.h"

#include <fcntl.h>
#include <string.h>

#include <memory>
#include <vector>

#include <android/file_descriptor_jni.h>
#include <log/log.h>
#include <nativehelper/JNIHelp.h>

#include "PinnedBytes.h"
#include "QuillHeifWriter.h"

namespace android {

namespace {

/**
 * A pinned frame array as the whole frame that the writer reads. An array that lacks only the tail of its last chroma
 * row is completed in a copy, and what the writer changed in that goes back into the array.
 */
class PinnedFrame {
  public:
    PinnedFrame(JNIEnv* env, jbyteArray array) : mArray(env, array) {}
    ~PinnedFrame() {
        if (!mCompleted.empty() && !mLate) memcpy(mArray.data(), mCompleted.data(), arrayBytes());
    }
    PinnedFrame(const PinnedFrame&) = delete;
    PinnedFrame& operator=(const PinnedFrame&) = delete;

    /** The frame's pixels; null when the array could not be pinned or is too short for `expected`. */
    uint8_t* pixels(const FrameBytes& expected) {
        if (mArray.failed() || mArray.length() < expected.least) return nullptr;
        if (mArray.length() >= expected.whole) return mArray.data();
        mCompleted.assign(mArray.data(), mArray.data() + arrayBytes());
        mCompleted.resize(static_cast<size_t>(expected.whole));
        return mCompleted.data();
    }

    /** The call returns while the looper still reads the frame. */
    void outliveCall() {
        mLate = true;
        mArray.outliveCall();
    }

  private:
    size_t arrayBytes() const { return static_cast<size_t>(mArray.length()); }

    PinnedBytes mArray;
    std::vector<uint8_t> mCompleted;
    bool mLate = false;
};

/** Writes the frame; a frame that timed out stays pinned until the looper is done with it. */
int32_t processPinnedFrame(const sp<QuillHeifWriter>& writer, const std::shared_ptr<PinnedFrame>& frame,
                           const PinnedBytes& exif, int output) {
    uint8_t* const pixels = frame->pixels(writer->expectedFrame());
    if (pixels == nullptr) {
        ALOGE("Input parameter is invalid!");
        return -1;
    }
    const int32_t result = writer->processInputFrame(pixels, exif.data(), static_cast<uint32_t>(exif.length()), output);
    if (result != 0 && writer->isFrameInFlight()) {
        frame->outliveCall();
        writer->holdUntilDestroyed(frame);
    }
    return result;
}

}  // namespace

bool isWritable(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

jlong nativeProcessHeicPhotoFrame(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif,
                                  jobject fd) {
    if (yuv == nullptr || env->GetObjectClass(thiz) == nullptr) {
        ALOGE("Input parameter is invalid!");
        return -1;
    }
    const sp<QuillHeifWriter> writer = writerOf(handle);
    if (writer == nullptr) {
        throwNotSetUp(env, "Muxer was not set up correctly");
        return -1;
    }
    if (fd == nullptr) return -1;
    const int output = AFileDescriptor_getFd(env, fd);
    ALOGD("native_setup: fd %d", output);
    if (!isWritable(output)) {
        ALOGE("File descriptor is not in read-write mode or write-only mode!");
        return -1;
    }
    const auto frame = std::make_shared<PinnedFrame>(env, yuv);
    const PinnedBytes block(env, exif);
    if (block.failed() || block.length() < 0) return -1;
    return processPinnedFrame(writer, frame, block, output);
}

// Registered, so that one build of the Java class serves this library and later ones; not able to write yet.
static jlong throwLivePhotoUnsupported(JNIEnv* env) {
    jniThrowException(env, "java/lang/UnsupportedOperationException", "This library does not write live photos yet");
    return -1;
}

jlong nativeCreateLivePhoto(JNIEnv* env, jobject /* thiz */, jlong /* handle */, jbyteArray /* yuv */,
                            jbyteArray /* exif */, jobject /* fd */, jobject /* options */) {
    return throwLivePhotoUnsupported(env);
}

jlong nativeCreateLivePhotoByBmp(JNIEnv* env, jobject /* thiz */, jlong /* handle */, jobject /* bitmap */,
                                 jbyteArray /* exif */, jobject /* fd */, jobject /* options */) {
    return throwLivePhotoUnsupported(env);
}

}  // namespace android
