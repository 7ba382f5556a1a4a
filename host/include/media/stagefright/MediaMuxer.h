#pragma once

#include <memory>

#include <media/stagefright/MediaMuxerBase.h>

namespace android {

/**
 * Writes still images to a HEIF file (ISO/IEC 23008-12 over 14496-12): one image item per track, or a `grid` item over
 * its tiles if the track has grid keys, with EXIF and XMP. Thread-safe.
 *
 * `stop` writes the whole file from the descriptor's current offset (from the end of a file opened for appending) and
 * truncates it there. Item offsets count from the start of the file, so only a file written from offset 0 is a HEIF
 * file of its own.
 */
struct MediaMuxer : public MediaMuxerBase {
    /**
     * Only OUTPUT_FORMAT_HEIF. `fd` must be writable and seekable; the muxer uses a duplicate of it. Returns null on
     * failure, otherwise an object without a reference.
     */
    static MediaMuxer* create(int fd, OutputFormat format);

    ~MediaMuxer() override;

    /**
     * `format` has "mime" image/vnd.android.heic, "width" and "height" of the whole image, "csd-0" (VPS, SPS and PPS
     * with start codes), and for a tiled image "tile-width", "tile-height", "grid-rows" and "grid-cols", which must
     * cover it. A nonzero "is-default" makes it the primary image; without one, the first track is. BAD_VALUE if a key
     * is missing or does not match the others or the bitstream.
     */
    ssize_t addTrack(const sp<AMessage>& format) override;

    status_t start() override;

    /** Written as the `irot` of every image. */
    status_t setOrientationHint(int degrees) override;

    /**
     * Leaves the descriptor's offset at the end of the HEIF data. ERROR_MALFORMED if tiles are missing: nothing is
     * written. ERROR_IO if writing failed: the file is truncated to where writing began.
     */
    status_t stop() override;

    /**
     * BUFFER_FLAG_MUXER_DATA: EXIF (a TIFF header, bare or after "Exif",0,0, also in an APP1 segment) or an XMP packet,
     * for the primary image. An empty sample is ignored and an unknown one dropped with a warning; both return OK.
     * BUFFER_FLAG_SYNC_FRAME: the next tile in row-major order, HEVC with start codes. BAD_VALUE for a surplus sample
     * and for one that does not decode on its own. BUFFER_FLAG_CODEC_CONFIG: ignored in favour of "csd-0". `timeUs` is
     * ignored.
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
