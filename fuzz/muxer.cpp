// Any sequence of a muxer's calls with any samples. A file that it reports as written opens in libheif.
#include <libheif/heif.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <media/stagefright/MediaCodecConstants.h>
#include <media/stagefright/MediaMuxer.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AMessage.h>

#include "ByteSource.h"
#include "HevcConfig.h"

namespace {

using namespace android;
using namespace quill::fuzz;

/** VPS, SPS and PPS of a 64x64 Main picture by x265, each a unit of its own that an input may change. */
const Bytes kParameterSets[] = {
        {0x40, 0x01, 0x0C, 0x01, 0xFF, 0xFF, 0x04, 0x08, 0x00, 0x00, 0x03, 0x00,
         0x9F, 0xA8, 0x00, 0x00, 0x03, 0x00, 0x00, 0x1E, 0xBA, 0x02, 0x40},
        {0x42, 0x01, 0x01, 0x04, 0x08, 0x00, 0x00, 0x03, 0x00, 0x9F, 0xA8, 0x00, 0x00, 0x03,
         0x00, 0x00, 0x1E, 0xA0, 0x20, 0x81, 0x05, 0x96, 0xEA, 0x49, 0x32, 0xBC, 0x05, 0xB8,
         0x28, 0x68, 0x28, 0x20, 0x00, 0x00, 0x03, 0x00, 0x20, 0x00, 0x00, 0x03, 0x03, 0x21},
        {0x44, 0x01, 0xC1, 0x72, 0xB0, 0x22, 0x40},
};
constexpr const char* kMetadataBeginnings[] = {
        "<x:xmpmeta", "<?xpacket", "Exif\0\0II*", "Exif\0\0MM", "II*", "\xFF\xE1\0\020Exif\0\0II",
};
constexpr size_t kBeginningSizes[] = {10, 9, 10, 8, 4, 12};
constexpr uint8_t kHeaders[] = {0x26, 0x26, 0x28, 0x2A, 0x02, 0x40, 0x42, 0x44, 0x4E, 0x7E};  // of NAL units, 0x26: IDR
constexpr uint32_t kFlags[] = {BUFFER_FLAG_SYNC_FRAME, BUFFER_FLAG_SYNC_FRAME, BUFFER_FLAG_MUXER_DATA,
                               BUFFER_FLAG_CODEC_CONFIG, 0};
constexpr const char* kGridKeys[] = {KEY_TILE_WIDTH, KEY_TILE_HEIGHT, KEY_GRID_ROWS, KEY_GRID_COLUMNS};

void addUnit(Bytes& stream, const Bytes& unit) {
    stream.insert(stream.end(), {0, 0, 0, 1});
    stream.insert(stream.end(), unit.begin(), unit.end());
}

sp<ABuffer> bufferOf(const Bytes& bytes) { return ABuffer::CreateAsCopy(bytes.data(), bytes.size()); }

/** The sets as they are, with some bytes changed, or anything. */
Bytes anyCodecData(ByteSource& script) {
    Bytes stream;
    if (script.number(0, 15) == 15) return script.bytes(script.number<size_t>(0, 200));
    for (Bytes unit : kParameterSets) {
        for (int changes = script.number(0, 7) - 4; changes > 0; --changes) {
            unit[script.number<size_t>(0, unit.size() - 1)] = script.number<uint8_t>(0, 255);
        }
        if (script.number(0, 31) == 31) continue;
        addUnit(stream, unit);
    }
    return stream;
}

/** Mostly what suits the parameter sets. */
int32_t anySize(ByteSource& script, int32_t suitable) {
    const int kind = script.number(0, 15);
    return kind < 12 ? suitable : kind == 12 ? script.number(INT32_MIN, INT32_MAX) : script.number(-1, 300);
}

sp<AMessage> anyFormat(ByteSource& script) {
    if (script.number(0, 31) == 31) return nullptr;
    const sp<AMessage> format = new AMessage;
    format->setString("mime", script.number(0, 31) == 31 ? "video/hevc" : "image/vnd.android.heic");
    const int32_t rows = script.number(0, 4), columns = script.number(1, 4);
    const int32_t sizes[] = {64, 64, rows, columns};
    format->setInt32("width", anySize(script, 64 * columns));
    format->setInt32("height", anySize(script, 64 * rows));
    for (size_t i = 0; rows > 0 && i < 4; ++i) {
        if (script.number(0, 31) != 31) format->setInt32(kGridKeys[i], anySize(script, sizes[i]));
    }
    if (rows == 0) {
        format->setInt32("width", anySize(script, 64));
        format->setInt32("height", anySize(script, 64));
    }
    if (script.flag()) format->setInt32(KEY_IS_DEFAULT, script.number(-1, 1));
    if (script.number(0, 31) != 31) format->setBuffer("csd-0", bufferOf(anyCodecData(script)));
    return format;
}

Bytes anySample(ByteSource& script, uint32_t flags) {
    Bytes sample;
    if (script.number(0, 7) == 7) return script.bytes(script.number<size_t>(0, 100));
    if (flags == BUFFER_FLAG_MUXER_DATA) {
        const size_t kind = script.number<size_t>(0, 5);
        sample.assign(kMetadataBeginnings[kind], kMetadataBeginnings[kind] + kBeginningSizes[kind]);
    }
    for (int units = flags == BUFFER_FLAG_MUXER_DATA ? 0 : script.number(1, 3); units > 0; --units) {
        addUnit(sample, {script.oneOf(kHeaders), 0x01, 0x80});
    }
    const Bytes rest = script.bytes(script.number<size_t>(0, 60));
    sample.insert(sample.end(), rest.begin(), rest.end());
    return sample;
}

/** The file that is written to: in memory, the same one for all inputs. */
int outputFile() {
    static const int fd = memfd_create("muxer", MFD_CLOEXEC);
    require(fd >= 0 && ftruncate(fd, 0) == 0 && lseek(fd, 0, SEEK_SET) == 0, "a file in memory");
    return fd;
}

void checkFile(int fd) {
    const off_t size = lseek(fd, 0, SEEK_CUR);
    struct stat info {};
    require(fstat(fd, &info) == 0 && info.st_size == size && size > 0, "the offset at the file's end");
    Bytes file(static_cast<size_t>(size));
    require(pread(fd, file.data(), file.size(), 0) == size, "a file that can be read");
    heif_context* const context = heif_context_alloc();
    const heif_error error = heif_context_read_from_memory_without_copy(context, file.data(), file.size(), nullptr);
    if (error.code != heif_error_Ok) fprintf(stderr, "libheif: %s\n", error.message);
    require(error.code == heif_error_Ok && heif_context_get_number_of_top_level_images(context) > 0, "a HEIF file");
    heif_context_free(context);
}

/** What one input does to one muxer. */
class Session {
  public:
    Session(ByteSource& script, int fd)
            : mScript(script), mFd(fd), mMuxer(MediaMuxer::create(fd, MediaMuxer::OUTPUT_FORMAT_HEIF)) {}

    void step() {
        switch (mScript.number(0, 7)) {
            case 0:
                return addTrack();
            case 1:
                return start();
            case 2:
                return stop();
            case 3:
                mMuxer->setOrientationHint(mScript.flag() ? mScript.number(-1, 361) : 90 * mScript.number(0, 3));
                return;
            case 4:
                mMuxer->getTrackFormat(mScript.number<size_t>(0, 2));
                return;
            default:
                return write();
        }
    }

    void stop() {
        const status_t status = mMuxer->stop();
        require(mStarted || status != OK, "no file before start");
        mStopped = mStopped || mStarted;
        mStarted = false;
        if (status == OK) checkFile(mFd);
        require(status == OK || mHasFile || lseek(mFd, 0, SEEK_END) == 0, "nothing left of a file that failed");
        mHasFile = mHasFile || status == OK;
    }

  private:
    void addTrack() {
        const ssize_t track = mMuxer->addTrack(anyFormat(mScript));
        require(track < 0 || (track == mTracks && !mStarted && !mStopped), "the number of a track");
        if (track >= 0) ++mTracks;
    }

    void start() {
        const bool started = mMuxer->start() == OK;
        require(!started || (mTracks > 0 && !mStarted && !mStopped), "a start with a track, once");
        mStarted = mStarted || started;
    }

    void write() {
        const uint32_t flags = mScript.oneOf(kFlags);
        const size_t track = mScript.number(0, 7) == 7 ? mScript.number<size_t>(0, 3) : 0;
        const sp<ABuffer> sample = bufferOf(anySample(mScript, flags));
        for (int times = mScript.flag() ? 16 : 1; times > 0; --times) {
            require(mMuxer->writeSampleData(sample, track, 0, flags) != OK || mStarted, "no sample before start");
        }
    }

    ByteSource& mScript;
    const int mFd;
    const sp<MediaMuxer> mMuxer;
    ssize_t mTracks = 0;
    bool mStarted = false, mStopped = false, mHasFile = false;
};

/** The input itself, to the byte: what else is read lies in buffers with room to spare, where no overrun shows. */
void checkReaders(const uint8_t* data, size_t size) {
    quill::host::parseHevcConfig({data, size});
    quill::host::BitReader bits({data, size});
    while (bits.ok()) bits.ue();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    checkReaders(data, size);
    ByteSource script(data, size);
    Session session(script, outputFile());
    while (!script.isSpent()) session.step();
    session.stop();
    return 0;
}
