#define LOG_TAG "QuillHeifWriter"

#include "SystemTrace.h"  // first: it chooses the trace tag

#include <unistd.h>

#include <new>

#include <log/log.h>
#include <media/stagefright/MediaCodec.h>
#include <media/stagefright/MediaCodecConstants.h>

#include "InputFrame.h"
#include "Nv12Conversion.h"

namespace android {

namespace {

/** Hands `size` bytes to the muxer as metadata of the image, without copying them first. */
void writeMetadata(const sp<MediaMuxer>& muxer, int32_t track, uint8_t* data, uint32_t size) {
    muxer->writeSampleData(new ABuffer(data, size), static_cast<size_t>(track), 0 /* timeUs */,
                           MediaCodec::BUFFER_FLAG_MUXER_DATA);
}

}  // namespace

void QuillHeifWriter::onMessageReceived(const sp<AMessage>& msg) {
    ATRACE_NAME("onMessageReceived");
    if (msg->what() != kWhatProcessInputFrameNotify) {
        ALOGE("shouldn't be here");
        return;
    }
    ALOGD("kWhatProcessInputFrameNotify, inputFrames size %zu", mInputFrames.size());
    if (!mInputFrames.empty()) {
        const sp<InputFrame> frame = mInputFrames[0];
        if (const Loan work(frame->workLease); work) {
            try {
                writeHeadFrame();
            } catch (const std::bad_alloc&) {
                ALOGE("No memory for the frame");
            }
            clearTopInputFrameExifData();
            frame->drop();
        }
        mInputFrames.erase(mInputFrames.begin());
    }
    ALOGD("kWhatProcessInputFrameNotify done");
}

void QuillHeifWriter::writeHeadFrame() {
    InputFrame& frame = *mInputFrames[0];
    if (const Loan file(frame.fileLease); file) {
        frame.muxer = MediaMuxer::create(frame.fd, MediaMuxer::OUTPUT_FORMAT_HEIF);
    }
    addYuvBuffer(frame.yuv);
    ALOGD("process Heif file finish");
    // A muxer that never started finishes nothing, and the frame is never reported as done: the caller times out.
    if (frame.muxer != nullptr && frame.muxerStarted) finishFile();
}

void QuillHeifWriter::finishFile() {
    InputFrame& frame = *mInputFrames[0];
    frame.muxer->stop();
    frame.muxer.clear();
    frame.muxerStarted = false;
    frame.fileLease.giveBack();
    if (frame.isFileFd == 0) ALOGE("%s: not support memory fd", "onMessageReceived");
    if (mCallback != nullptr) mCallback(0, mEncodedData, mEncodedSize);
    frame.encodeDone.store(true, std::memory_order_release);
    if (frame.isFileFd == 0 && ::close(frame.fd) != 0) ALOGD("close encode file failed!");
}

void QuillHeifWriter::addYuvBuffer(uint8_t* yuv) {
    ATRACE_NAME("addYuvBuffer");
    InputFrame& frame = *mInputFrames[0];
    if (mFormat != nullptr && mFormat->hasVBeforeU && !swapNv21Chroma(yuv)) return;
    frame.inputConsumed.store(true, std::memory_order_release);

    std::vector<sp<ABuffer>> buffers;
    frame.encoder->setFrameLease(&frame.pixelLease);
    if (frame.encoder->addYuvBuffer(yuv, buffers) != OK) {
        ALOGE("Encoder failed!");
        return;
    }
    ALOGD("encoded output buffers size, %zu", buffers.size());
    startMuxer(frame.encoder->getFormat());
    onOutputBufferReceived(buffers);
}

/** False if the pixels are the caller's again. */
bool QuillHeifWriter::swapNv21Chroma(uint8_t* yuv) {
    const FrameGeometry& g = mGeometry;
    ALOGD("[NV21 to NV12]width: %d, height: %d, stride: %d X %d,start!!!", g.width, g.height, g.stride, g.sliceHeight);
    if (yuv == nullptr) {
        ALOGE("Input Buffer is NULL!");
        return true;
    }
    if (const Loan pixels(mInputFrames[0]->pixelLease); pixels) {
        swapChromaPairs(yuv, mGeometry);
    } else {
        return false;
    }
    ALOGD("[NV21 to NV12] END!!!");
    return true;
}

void QuillHeifWriter::startMuxer(const sp<AMessage>& format) {
    InputFrame& frame = *mInputFrames[0];
    frame.trackIndices.resize(static_cast<size_t>(mImageCount));
    if (frame.muxer == nullptr || format == nullptr) return;

    if (mRotation >= 1) {
        ALOGD("setting rotation: %d", mRotation);
        frame.muxer->setOrientationHint(mRotation);
    }
    if (mFormat != nullptr && mFormat->bitDepth > 8) format->setInt32("BitDepth", mFormat->bitDepth);
    for (int32_t& track : frame.trackIndices) {
        format->setInt32(KEY_IS_DEFAULT, 1);
        track = static_cast<int32_t>(frame.muxer->addTrack(format));
    }
    if (!frame.fileLease.take()) return;
    if (frame.muxer->start() != OK) {
        ALOGE("!!! Muxer start error, please check file access permision");
        return;
    }
    frame.muxerStarted = true;
    processExifData();
}

void QuillHeifWriter::processExifData() {
    InputFrame& frame = *mInputFrames[0];
    if (!frame.muxerStarted) {
        ALOGE("<--- process Exif Data Error! --->");
        return;
    }
    frame.exifLease.revoke();
    frame.exifLease.awaitReturn();
    // Exactly as held, the caller's framing included. A frame without EXIF gives an empty sample, which the muxer
    // leaves out.
    const int32_t track = frame.trackIndices[0];
    writeMetadata(frame.muxer, track, frame.exifData.get(), frame.exifSize);
    if (!frame.xmp.empty()) {
        writeMetadata(frame.muxer, track, reinterpret_cast<uint8_t*>(frame.xmp.data()),
                      static_cast<uint32_t>(frame.xmp.size()));
    }
}

void QuillHeifWriter::onOutputBufferReceived(const std::vector<sp<ABuffer>>& buffers) {
    ATRACE_NAME("onOutputBufferReceived");
    InputFrame& frame = *mInputFrames[0];
    if (frame.muxer == nullptr) return;
    ALOGD("muxer image item begin!");
    for (size_t i = 0; i < buffers.size(); ++i) {
        const size_t image = mTileCount == 0 ? 0 : i / static_cast<size_t>(mTileCount);
        frame.muxer->writeSampleData(buffers[i], static_cast<size_t>(frame.trackIndices[image]), 0 /* timeUs */,
                                     MediaCodec::BUFFER_FLAG_SYNCFRAME);
    }
    ALOGD("muxer image item end! size %d", static_cast<int>(buffers.size()));
}

// Takes the last frame queued: with one frame in flight it is the one just written.
void QuillHeifWriter::clearTopInputFrameExifData() {
    if (mInputFrames.empty()) return;
    InputFrame& frame = *mInputFrames.back();
    frame.exifLease.revoke();
    frame.exifLease.awaitReturn();
    frame.exifData.reset();
}

}  // namespace android
