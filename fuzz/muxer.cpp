// A muxer's track and samples of any content. A file that it reports as written opens in libheif.
#include <libheif/heif.h>
#include <sys/mman.h>
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

sp<ABuffer> bufferOf(const std::string& bytes) { return ABuffer::CreateAsCopy(bytes.data(), bytes.size()); }

sp<AMessage> anyFormat(ByteSource& script) {
    const sp<AMessage> format = new AMessage;
    format->setString("mime", "image/vnd.android.heic");
    const int32_t keys = script.byte();
    int bit = 1;
    for (const char* key : {KEY_WIDTH, KEY_HEIGHT, KEY_TILE_WIDTH, KEY_TILE_HEIGHT, KEY_GRID_ROWS, KEY_GRID_COLUMNS}) {
        const int32_t value = static_cast<int16_t>(script.number());
        if ((keys & bit) != 0) format->setInt32(key, value);
        bit *= 2;
    }
    format->setBuffer("csd-0", bufferOf(script.bytes(static_cast<size_t>(script.byte()))));
    return format;
}

void checkFile(int fd) {
    heif_context* const context = heif_context_alloc();
    const heif_error error =
            heif_context_read_from_file(context, ("/proc/self/fd/" + std::to_string(fd)).c_str(), nullptr);
    if (error.code != heif_error_Ok) fprintf(stderr, "libheif: %s\n", error.message);
    require(error.code == heif_error_Ok && heif_context_get_number_of_top_level_images(context) > 0, "a HEIF file");
    heif_context_free(context);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The input itself, to the byte: the rest is read from buffers with room to spare, where no overrun shows.
    quill::host::parseHevcConfig({data, size});
    static const int fd = memfd_create("muxer", MFD_CLOEXEC);
    require(ftruncate(fd, 0) == 0 && lseek(fd, 0, SEEK_SET) == 0, "a file in memory");
    ByteSource script(data, size);
    const sp<MediaMuxer> muxer = MediaMuxer::create(fd, MediaMuxer::OUTPUT_FORMAT_HEIF);
    muxer->addTrack(anyFormat(script));
    muxer->setOrientationHint(2 * script.byte());
    muxer->start();
    for (int samples = 0; samples < 16 && !script.isSpent(); ++samples) {
        const auto flags = static_cast<uint32_t>(script.byte());
        muxer->writeSampleData(bufferOf(script.bytes(static_cast<size_t>(script.byte()))), 0, 0, flags);
    }
    if (muxer->stop() == OK) checkFile(fd);
    return 0;
}
