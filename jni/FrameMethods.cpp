#include "JniNames.h"  // first: it names the log tag

#include "HeifWriterJni.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <memory>
#include <string>

#include <android/bitmap.h>
#include <android/file_descriptor_jni.h>
#include <log/log.h>

#include "FrameSource.h"
#include "PinnedBytes.h"
#include "QuillHeifWriter.h"

namespace android {

namespace {

/** A descriptor of our own for an open file: after a time-out the caller's number may be that of another file. */
class OwnDescriptor {
  public:
    explicit OwnDescriptor(int fd) : mFd(fcntl(fd, F_DUPFD_CLOEXEC, 0)) {
        if (mFd < 0) ALOGE("File descriptor cannot be duplicated: %s", strerror(errno));
    }
    ~OwnDescriptor() {
        if (mFd >= 0) close(mFd);
    }
    OwnDescriptor(const OwnDescriptor&) = delete;
    OwnDescriptor& operator=(const OwnDescriptor&) = delete;

    /** -1 when the file could not be had. */
    int get() const { return mFd; }

  private:
    const int mFd;
};

/** What the writer may still use after a call has timed out. */
struct HeldForWriter {
    std::unique_ptr<FrameSource> frame;
    std::unique_ptr<OwnDescriptor> output;
    std::string xmp;
};

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

std::string textOf(JNIEnv* env, jobject string) {
    const auto text = static_cast<jstring>(string);
    if (text == nullptr) return {};
    const char* const characters = env->GetStringUTFChars(text, nullptr);
    if (characters == nullptr) return {};
    std::string copy(characters, static_cast<size_t>(env->GetStringUTFLength(text)));
    env->ReleaseStringUTFChars(text, characters);
    return copy;
}

/**
 * Calls `write(pixels, descriptor)` with the frame's pixels and the file `output`. What the looper still uses
 * afterwards stays as it is until the writer is destroyed.
 */
template <typename Write>
jlong writeFrame(const sp<QuillHeifWriter>& writer, const std::shared_ptr<HeldForWriter>& held, int output,
                 Write write) {
    uint8_t* const pixels = held->frame->pixels(writer->expectedFrame());
    if (pixels == nullptr) {
        ALOGE("Input parameter is invalid!");
        return -1;
    }
    held->output = std::make_unique<OwnDescriptor>(output);
    if (held->output->get() == -1) return -1;
    const int32_t result = write(pixels, held->output->get());
    const bool late = result != 0 && writer->isFrameInFlight();
    if (late) {
        held->frame->outliveCall();
    } else {
        held->frame.reset();
        held->output.reset();
    }
    // The writer keeps the packet for frames to come.
    if (late || !held->xmp.empty()) writer->holdUntilDestroyed(held);
    return result;
}

/** The common part of both live-photo methods; `makeFrame` pins or locks the pixels. */
template <typename MakeFrame>
jlong writeLivePhoto(JNIEnv* env, jlong handle, jbyteArray exif, const ParsedOptions& options,
                     const LivePhotoFiles& files, MakeFrame makeFrame) {
    const sp<QuillHeifWriter> writer = writerOf(handle);
    if (writer == nullptr) {
        throwNotSetUp(env, "Muxer was not set up correctly");
        return -1;
    }
    const PinnedBytes block(env, exif);
    const PinnedBytes extender(env, static_cast<jbyteArray>(options.fileExtender));
    if (block.failed() || block.length() < 0 || extender.failed()) return -1;
    const auto held = std::make_shared<HeldForWriter>();
    held->xmp = textOf(env, options.xmpData);
    held->frame = makeFrame();
    return writeFrame(writer, held, files.output, [&](uint8_t* pixels, int output) {
        return writer->createLivePhoto(pixels, block.data(), static_cast<uint32_t>(block.length()), held->xmp.data(),
                                       static_cast<uint32_t>(held->xmp.size()), extender.data(),
                                       static_cast<uint32_t>(extender.length()), files.gainmap, files.video, output);
    });
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
    const PinnedBytes block(env, exif);
    if (block.failed() || block.length() < 0) return -1;
    const auto held = std::make_shared<HeldForWriter>();
    held->frame = std::make_unique<PinnedFrame>(env, yuv);
    return writeFrame(writer, held, output, [&](uint8_t* pixels, int file) {
        return writer->processInputFrame(pixels, block.data(), static_cast<uint32_t>(block.length()), file);
    });
}

jlong nativeCreateLivePhoto(JNIEnv* env, jobject thiz, jlong handle, jbyteArray yuv, jbyteArray exif, jobject fd,
                            jobject options) {
    const jclass clazz = env->GetObjectClass(thiz);
    const ParsedOptions parsed = parseOptions(env, options);
    if (fd == nullptr || yuv == nullptr || clazz == nullptr || parsed.videoFd == nullptr) return -1;
    const LivePhotoFiles files = filesOf(env, fd, parsed);
    if (!files.areUsable()) {
        ALOGE("File descriptor is not in read-write mode or write-only mode!");
        return -1;
    }
    return writeLivePhoto(env, handle, exif, parsed, files, [&] { return std::make_unique<PinnedFrame>(env, yuv); });
}

// Differs from its sibling on purpose: descriptors are refused without a log, and the bitmap is asked for its format
// without being held to it. Apps that probe with a bitmap first do not expect lines in their log.
jlong nativeCreateLivePhotoByBmp(JNIEnv* env, jobject thiz, jlong handle, jobject bitmap, jbyteArray exif, jobject fd,
                                 jobject options) {
    const jclass clazz = env->GetObjectClass(thiz);
    const ParsedOptions parsed = parseOptions(env, options);
    if (fd == nullptr || bitmap == nullptr || clazz == nullptr || parsed.videoFd == nullptr) return -1;
    const LivePhotoFiles files = filesOf(env, fd, parsed);
    if (!files.areUsable()) return -1;
    AndroidBitmapInfo info;
    AndroidBitmap_getInfo(env, bitmap, &info);
    return writeLivePhoto(env, handle, exif, parsed, files,
                          [&] { return std::make_unique<LockedBitmap>(env, bitmap); });
}

}  // namespace android
