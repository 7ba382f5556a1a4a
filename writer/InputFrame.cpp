#define LOG_TAG "QuillHeifWriter"

#include "InputFrame.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <log/log.h>

namespace android {

QuillHeifWriter::InputFrame::InputFrame(uint8_t* pixels, int outputFd, const sp<QuillHeifEncoder>& codec)
        : yuv(pixels), fd(fcntl(outputFd, F_DUPFD_CLOEXEC, 0)), encoder(codec) {
    if (fd < 0) ALOGE("File descriptor cannot be duplicated: %s", strerror(errno));
}

QuillHeifWriter::InputFrame::~InputFrame() { drop(); }

// Pixels in use are waited for, a tile's copy at most. A muxer that is writing is not.
void QuillHeifWriter::InputFrame::endLending() {
    pixelLease.revoke();
    if (fileLease.revoke()) ALOGE("The muxer is still writing and may complete the file");
    const bool atWork = workLease.revoke();
    pixelLease.awaitReturn();
    if (!atWork) drop();
}

void QuillHeifWriter::InputFrame::drop() {
    muxer.clear();
    encoder.clear();
    exifData.reset();
    xmp.clear();
    if (fd >= 0) ::close(fd);
    fd = -1;
    fileLease.giveBack();  // of a muxer that did not come to its end
}

}  // namespace android
