#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <sched.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <new>

#include <cutils/properties.h>
#include <log/log.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaMuxer.h>

#include "ExifBlock.h"
#include "InputColorFormat.h"
#include "PixelConversion.h"
#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

namespace {

constexpr int kMinQuillApiLevel = 31;

int propertyNumber(const char* key, const char* fallback) {
    char value[PROPERTY_VALUE_MAX] = {};
    property_get(key, value, fallback);
    return atoi(value);
}

/** Whether this system has thumbnails in EXIF blocks at all. */
bool thumbnailsAreWanted() {
    if (propertyNumber("ro.build.version.quill.api", "unknown") < kMinQuillApiLevel) {
        ALOGD("system version is too low.");
        return false;
    }
    if (propertyNumber("debug.heif.exif.thmb", "0") != 0) {
        ALOGD("close add thumbnail");
        return false;
    }
    return true;
}

/** Hands `size` bytes to the muxer as metadata of the image, without copying them first. */
void writeMetadata(const sp<MediaMuxer>& muxer, int32_t track, uint8_t* data, uint32_t size) {
    muxer->writeSampleData(new ABuffer(data, size), static_cast<size_t>(track), 0 /* timeUs */,
                           MediaCodec::BUFFER_FLAG_MUXER_DATA);
}

}  // namespace

bool QuillHeifWriter::analysisExif(uint8_t* exif, uint32_t exifLen, uint32_t& initPosition) {
    if (!thumbnailsAreWanted()) return false;
    ATRACE_NAME("analysisExif");
    ALOGD("AnalysisExif begin");
    const ExifAnalysis analysis = analyseExifBlock({exif, exifLen}, initPosition);
    initPosition = analysis.initPosition;
    if (analysis.outcome == ExifAnalysis::kNoTiffHeader) ALOGD("Can't find initPosition.");
    if (analysis.outcome == ExifAnalysis::kHasIfd1) ALOGD("HAS IFD1");
    return analysis.outcome == ExifAnalysis::kNoIfd1;
}

bool QuillHeifWriter::alterExif(uint8_t* yuv, uint8_t* oldExif, uint8_t* newExif, uint32_t& exifSize,
                                uint32_t initPosition) {
    ATRACE_NAME("alterExif");
    if (yuv == nullptr || oldExif == nullptr || newExif == nullptr) {
        ALOGE("Invalid input parameters detected");
        return false;
    }
    const std::unique_ptr<uint8_t[]> jpeg(new (std::nothrow) uint8_t[thumbnailCapacity()]);
    const int jpegSize = jpeg == nullptr ? -1 : creatThmb(yuv, jpeg.get());
    if (jpegSize == -1) {
        ALOGE("CreatThmb fail");
        return false;
    }
    const uint32_t oldSize = exifSize;
    exifSize += static_cast<uint32_t>(kThumbnailDirectorySize) + static_cast<uint32_t>(jpegSize);
    ALOGD("newExif size:%d,oldExif size:%d", static_cast<int>(exifSize), static_cast<int>(oldSize));
    appendThumbnailDirectory({oldExif, oldSize}, initPosition, {jpeg.get(), static_cast<size_t>(jpegSize)}, newExif);
    return true;
}

// A photograph is never lost for its thumbnail: whatever fails here leaves the frame with its own copy of the block.
void QuillHeifWriter::changeExif(uint8_t* yuv, uint8_t* exif, uint32_t exifSize, uint32_t initPosition) {
    std::unique_ptr<uint8_t, void (*)(void*)> converted(nullptr, free);
    uint8_t* const source = thumbnailSource(yuv, &converted);
    if (source == nullptr) return;
    // Zeroed, because the spare byte in front of the new directory is never written.
    const std::unique_ptr<uint8_t[]> newExif(
            new (std::nothrow) uint8_t[size_t{exifSize} + thumbnailCapacity() + kThumbnailDirectorySize]());
    uint32_t size = exifSize;
    if (!alterExif(source, exif, newExif.get(), size, initPosition) || size == 0) return;
    replaceQueuedExif(newExif.get(), size);
}

// With an odd stride or slice height chroma is read that a camera's frame does not have.
bool QuillHeifWriter::isReadableAsNv12() const {
    const bool semiPlanar = mColorFormat == FORMAT_NV12 || mColorFormat == FORMAT_NV21;
    return semiPlanar && mStride % 2 == 0 && mSliceHeight % 2 == 0;
}

uint8_t* QuillHeifWriter::thumbnailSource(uint8_t* frame, std::unique_ptr<uint8_t, void (*)(void*)>* converted) {
    if (isReadableAsNv12()) {
        ATRACE_NAME("saveYuvBuf");  // a still's traces name this step, also where nothing is left to do
        return frame;
    }
    // Zeroed for what an odd stride leaves unwritten; and by the system, which hands out large blocks like that.
    converted->reset(static_cast<uint8_t*>(calloc(AllottedArea{mStride, mSliceHeight}.nv12Bytes(), 1)));
    if (*converted == nullptr || saveYuvBuf(frame, converted->get()) == -1) return nullptr;
    return converted->get();
}

void QuillHeifWriter::replaceQueuedExif(const uint8_t* exif, uint32_t exifSize) {
    auto* const tmpExif = static_cast<uint8_t*>(malloc(exifSize));
    if (tmpExif == nullptr) {
        ALOGE("malloc tmpExif fail");
        return;
    }
    memcpy(tmpExif, exif, exifSize);

    uint8_t* unused = tmpExif;
    uint8_t state = kExifFree;
    // The looper was here first: the block that it writes stays as it is, and so does the queue.
    if (mExifState.compare_exchange_strong(state, kExifBeingReplaced, std::memory_order_acquire)) {
        if (mInputFrames.empty()) {
            ALOGE("change exif fail");
        } else {
            InputFrame& frame = mInputFrames.editItemAt(mInputFrames.size() - 1);
            unused = frame.exifData;
            frame.exifData = tmpExif;
            frame.exifSize = exifSize;
        }
        mExifState.store(kExifFree, std::memory_order_release);
    }
    free(unused);
}

void QuillHeifWriter::takeExif() {
    uint8_t state = kExifFree;
    while (!mExifState.compare_exchange_weak(state, kExifTaken, std::memory_order_acquire)) {
        if (state == kExifTaken) return;
        state = kExifFree;
        sched_yield();  // being replaced: the caller is two stores away from the end of it
    }
}

void QuillHeifWriter::processExifData() {
    if (!mMuxerStarted) {
        ALOGE("<--- process Exif Data Error! --->");
        return;
    }
    takeExif();
    // Exactly as held, the caller's framing included. A frame without EXIF gives an empty sample, which the muxer
    // leaves out.
    const InputFrame& frame = mInputFrames[0];
    writeMetadata(mMuxer, mTrackIndices[0], frame.exifData, frame.exifSize);
    if (mHasXmp) writeMetadata(mMuxer, mTrackIndices[0], mXmpData, mXmpSize);
}

}  // namespace android
