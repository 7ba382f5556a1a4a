#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <stdlib.h>
#include <string.h>

#include <memory>
#include <new>
#include <utility>

#include <log/log.h>

#include "ExifBlock.h"
#include "InputFrame.h"
#include "SystemProperties.h"
#include "Thumbnail.h"

namespace android {

namespace {

constexpr int kMinQuillApiLevel = 31;

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

/** The body of `alterExif`. `makeJpeg` fills a buffer of `capacity` bytes with the thumbnail; its size, or -1. */
template <typename MakeJpeg>
bool appendThumbnail(MakeJpeg makeJpeg, size_t capacity, const uint8_t* oldExif, uint8_t* newExif, uint32_t& exifSize,
                     uint32_t initPosition) {
    const std::unique_ptr<uint8_t[]> jpeg(new (std::nothrow) uint8_t[capacity]);
    const int jpegSize = jpeg == nullptr ? -1 : makeJpeg(jpeg.get());
    if (jpegSize == -1) {
        ALOGE("CreatThmb fail");
        return false;
    }
    const ExifBytes thumbnail{jpeg.get(), static_cast<size_t>(jpegSize)};
    if (!appendThumbnailDirectory({oldExif, exifSize}, initPosition, thumbnail, newExif)) {
        ALOGE("change exif fail");
        return false;
    }
    const uint32_t oldSize = exifSize;
    exifSize += static_cast<uint32_t>(kThumbnailDirectorySize + thumbnail.size);
    ALOGD("newExif size:%d,oldExif size:%d", static_cast<int>(exifSize), static_cast<int>(oldSize));
    return true;
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
    return appendThumbnail([&](uint8_t* jpeg) { return creatThmb(yuv, jpeg); }, thumbnailCapacity(), oldExif, newExif,
                           exifSize, initPosition);
}

// A photograph is never lost for its thumbnail: whatever fails here leaves the frame with its own copy of the block.
void QuillHeifWriter::changeExif(uint8_t* yuv, uint8_t* exif, uint32_t exifSize, uint32_t initPosition) {
    if (mFormat == nullptr) {
        saveYuvBuf(nullptr, nullptr);  // which logs why
        return;
    }
    const std::unique_ptr<uint8_t[]> thumbnail = emptyThumbnail();
    if (thumbnail != nullptr) {
        ATRACE_NAME("saveYuvBuf");  // a still's traces name this step
        sampleThumbnail(yuv, *mFormat, mGeometry, {mThmbWidth, mThmbHeight}, thumbnail.get());
    }
    ATRACE_NAME("alterExif");
    // Zeroed, because the spare byte in front of the new directory is never written.
    const std::unique_ptr<uint8_t[]> newExif(
            new (std::nothrow) uint8_t[size_t{exifSize} + thumbnailCapacity() + kThumbnailDirectorySize]());
    const auto compress = [&](uint8_t* jpeg) { return thumbnail == nullptr ? -1 : yuvToJpeg(thumbnail.get(), jpeg); };
    uint32_t size = exifSize;
    if (newExif == nullptr) {
        ALOGE("Invalid input parameters detected");
    } else if (appendThumbnail(compress, thumbnailCapacity(), exif, newExif.get(), size, initPosition)) {
        replaceQueuedExif(newExif.get(), size);
    }
}

void QuillHeifWriter::replaceQueuedExif(const uint8_t* exif, uint32_t exifSize) {
    InputFrame::Block tmpExif(static_cast<uint8_t*>(malloc(exifSize)), free);
    if (tmpExif == nullptr) {
        ALOGE("malloc tmpExif fail");
        return;
    }
    memcpy(tmpExif.get(), exif, exifSize);
    if (mQueuedFrame != nullptr) {
        if (const Loan block(mQueuedFrame->exifLease); block) {
            mQueuedFrame->exifData = std::move(tmpExif);
            mQueuedFrame->exifSize = exifSize;
            return;
        }
    }
    ALOGE("change exif fail");  // no frame, or the looper has taken its block: it is written as it was
}

}  // namespace android
