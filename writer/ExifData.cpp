#define LOG_TAG "QuillHeifWriter"

#include <log/log.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaMuxer.h>

#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

namespace {

/** Hands `size` bytes to the muxer as metadata of the image, without copying them first. */
void writeMetadata(const sp<MediaMuxer>& muxer, int32_t track, uint8_t* data, uint32_t size) {
    muxer->writeSampleData(new ABuffer(data, size), static_cast<size_t>(track), 0 /* timeUs */,
                           MediaCodec::BUFFER_FLAG_MUXER_DATA);
}

}  // namespace

void QuillHeifWriter::processExifData() {
    if (!mMuxerStarted) {
        ALOGE("<--- process Exif Data Error! --->");
        return;
    }
    // Exactly as held, the caller's framing included. A frame without EXIF gives an empty sample, which the muxer
    // leaves out.
    const InputFrame& frame = mInputFrames[0];
    writeMetadata(mMuxer, mTrackIndices[0], frame.exifData, frame.exifSize);
    if (mHasXmp) writeMetadata(mMuxer, mTrackIndices[0], mXmpData, mXmpSize);
}

}  // namespace android
