#include "support/Still.h"

namespace quill::test {

Still::Still(const CameraFrame& shot, int quality, int rotation) : frame(shot), writer(new android::QuillHeifWriter) {
    const Geometry& geometry = frame.geometry;
    writer->start(geometry.width, geometry.height, geometry.stride, geometry.sliceHeight, frame.format, quality,
                  rotation);
}

Still::~Still() {
    writer->close();
    writer->destroy();
}

int32_t Still::write(std::vector<uint8_t> exif) {
    return writer->processInputFrame(frame.bytes.data(), exif.empty() ? nullptr : exif.data(),
                                     static_cast<uint32_t>(exif.size()), file.fd());
}

}  // namespace quill::test
