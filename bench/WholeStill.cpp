#include "WholeStill.h"

#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "QuillHeifWriter.h"

namespace quill::bench {

namespace {

constexpr int kQuality = 95;
constexpr int kPollUs = 2000;

}  // namespace

WholeStill::WholeStill(android::InputColorFormat format, const test::Geometry& geometry, std::vector<uint8_t> exif)
        : mFormat(format), mGeometry(geometry), mExif(std::move(exif)) {}

void WholeStill::write(uint8_t* frame) {
    if (ftruncate(mFile.fd(), 0) != 0 || lseek(mFile.fd(), 0, SEEK_SET) != 0) {
        throw std::runtime_error("cannot empty " + mFile.path());
    }
    const android::sp<android::QuillHeifWriter> writer = new android::QuillHeifWriter;
    writer->start(mGeometry.width, mGeometry.height, mGeometry.stride, mGeometry.sliceHeight, mFormat, kQuality, 0);
    const int32_t result =
            writer->processInputFrame(frame, mExif.data(), static_cast<uint32_t>(mExif.size()), mFile.fd());
    writer->close();
    writer->destroy();
    if (result != 0) throw std::runtime_error("the still was not written");
}

void waitAsPolling() {
    usleep(kPollUs);
    usleep(kPollUs);
}

}  // namespace quill::bench
