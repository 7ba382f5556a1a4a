#pragma once

#include <memory>

#include <media/stagefright/MediaMuxerBase.h>

namespace android {

/**
 * Writes still images to a HEIF file (ISO/IEC 23008-12 over 14496-12): one image item per track, a `grid` item
 * over its tiles when the track has grid keys, EXIF and XMP beside it. Thread-safe.
 *
 * The file is written as a whole by `stop`, from the descriptor's current offset on (from the file's end when it was
 * opened for appending), and what lay behind that offset before is cut off. Item offsets in it count from the start of
 * the file, so only a file written from offset 0 is a HEIF file of its own.
 */
struct MediaMuxer : public MediaMuxerBase {
    /**
     * Only OUTPUT_FORMAT_HEIF. `fd` must be writable and seekable; it is duplicated and stays the caller's. Returns
     * null on failure, and an object without a reference yet otherwise.
     */
    static MediaMuxer* create(int fd, OutputFormat format);

    ~MediaMuxer() override;

    /**
     * `format` holds "mime" image/vnd.android.heic, "width" and "height" of the whole image, "csd-0" (VPS, SPS, PPS
     * behind start codes), and for a tiled image all of "tile-width", "tile-height", "grid-rows", "grid-cols", which
     * have to cover it. A nonzero "is-default" makes it the primary image; without one that is the first track.
     * BAD_VALUE when a key lacks or does not fit the others or the bitstream.
     */
    ssize_t addTrack(const sp<AMessage>& format) override;

    status_t start() override;

    /** Written as the `irot` of every image. */
    status_t setOrientationHint(int degrees) override;

    /**
     * Leaves the descriptor's offset at the end of the HEIF data. ERROR_MALFORMED when tiles lack: nothing is written.
     * ERROR_IO when writing failed: the file is cut back to where writing began, so that nothing in it passes for an
     * image.
     */
    status_t stop() override;

    /**
     * BUFFER_FLAG_MUXER_DATA: EXIF (a TIFF header, behind "Exif",0,0 or that in an APP1 segment, or bare) or an XMP
     * packet, for the primary image; an empty sample is ignored, an unknown one is dropped with a warning, and both
     * return OK. BUFFER_FLAG_SYNC_FRAME: the next tile in row-major order, HEVC behind start codes. BAD_VALUE for a
     * sample too many and for one that is no picture of its own. BUFFER_FLAG_CODEC_CONFIG: ignored, "csd-0" counts.
     * `timeUs` means nothing in a still image.
     */
    status_t writeSampleData(const sp<ABuffer>& buffer, size_t trackIndex, int64_t timeUs, uint32_t flags) override;

    ssize_t getTrackCount() override;
    sp<AMessage> getTrackFormat(size_t index) override;

  private:
    struct State;

    explicit MediaMuxer(std::unique_ptr<State> state);

    const std::unique_ptr<State> mState;
};

}  // namespace android
